#include "ResetPage.h"

#include "catalogue/Recovery.h"

namespace ResetPage {
namespace {

QString page(const QString& body) {
    return QStringLiteral("<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>Tavlo "
                          "password</title></head><body style=\"font-family:sans-serif\">"
                          "<h1>Tavlo password</h1>%1</body></html>\n")
        .arg(body);
}

const QString kSpent = QStringLiteral("<p>This link is not valid any more. Ask for a new one "
                                      "from the sign-in window.</p>");

} // namespace

Page Handle(Database& db, bool post, const QHash<QString, QString>& fields) {
    const QString token = fields.value(QStringLiteral("token"));
    if (!Recovery::UserOfToken(db, token))
        return {410, page(kSpent)};
    if (!post) {
        return {200, page(QStringLiteral(
                              "<form method=\"post\" action=\"/reset\">"
                              "<input type=\"hidden\" name=\"token\" value=\"%1\">"
                              "<p><label>New password <input type=\"password\" name=\"password\" "
                              "minlength=\"4\" maxlength=\"64\" required></label></p>"
                              "<p><label>Again <input type=\"password\" name=\"again\" "
                              "minlength=\"4\" maxlength=\"64\" required></label></p>"
                              "<p><button type=\"submit\">Set password</button></p></form>")
                              .arg(token.toHtmlEscaped()))};
    }
    const QString password = fields.value(QStringLiteral("password"));
    if (password.size() < 4 || password.size() > 64 ||
        password != fields.value(QStringLiteral("again")))
        return {400, page(QStringLiteral("<p>The two passwords must match and be 4 to 64 "
                                         "characters long. Go back and try again.</p>"))};
    if (!Recovery::Reset(db, token, password))
        return {410, page(kSpent)};
    return {200,
            page(QStringLiteral("<p>Your new password is set. Sign in to Tavlo with it.</p>"))};
}

} // namespace ResetPage
