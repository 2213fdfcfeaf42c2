#include "WebBoard.h"

#include "WebSignIn.h"
#include "catalogue/Board.h"
#include "wire/Recordset.h"

namespace WebBoard {
namespace {

QString pageHtml(const QString& title, const QString& body) {
    return QStringLiteral(
               "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>%1</title><style>"
               "body{font-family:sans-serif;margin:1.5em}table{border-collapse:collapse}"
               "td,th{border:1px solid #bbb;padding:.25em .6em;text-align:left}"
               "th{background:#eee}.dot{display:inline-block;width:.8em;height:.8em;"
               "border-radius:50%;margin-right:.4em;border:1px solid #555}</style></head>"
               "<body>%2</body></html>\n")
        .arg(title.toHtmlEscaped(), body);
}

Page signInFormPage(int status, const QString& reason) {
    QString body = QStringLiteral("<h1>Tavlo</h1>");
    if (!reason.isEmpty())
        body += QStringLiteral("<p><strong>%1</strong></p>").arg(reason.toHtmlEscaped());
    body +=
        QStringLiteral("<form method=\"post\" action=\"/logincheck.asp\">"
                       "<p><label>User Name <input name=\"UserName\" maxlength=\"64\"></label></p>"
                       "<p><label>Password <input type=\"password\" name=\"Password\" "
                       "maxlength=\"64\"></label></p>"
                       "<p><button type=\"submit\">Sign In</button></p></form>");
    return {status, pageHtml(QStringLiteral("Tavlo"), body)};
}

QString cell(const wire::Recordset& rs, const char* column) {
    return rs.Fields(QString::fromLatin1(column)).Value().toString().trimmed().toHtmlEscaped();
}

QString boardTable(Database& db, const WebSignIn& account) {
    wire::Recordset rs(Board::people(db, account.userSys, QStringLiteral("c.organizationsys = ?"),
                                     {account.organizationSys}));
    QString rows;
    for (; !rs.Eof(); rs.MoveNext()) {
        QString returning = cell(rs, "returningtext");
        if (returning.startsWith(QStringLiteral("01/01/00")))
            returning.clear();
        rows += QStringLiteral("<tr><td>%1 %2</td><td>%3</td><td><span class=\"dot\" "
                               "style=\"background:#%4\"></span>%5</td><td>%6</td><td>%7</td></tr>")
                    .arg(cell(rs, "FirstName"), cell(rs, "LastName"), cell(rs, "Ext"),
                         cell(rs, "ColorCode"), cell(rs, "Status"), returning, cell(rs, "comment"));
    }
    return QStringLiteral("<table><tr><th>Name</th><th>Ext</th><th>Status</th><th>Returning</th>"
                          "<th>Comment</th></tr>%1</table>")
        .arg(rows);
}

} // namespace

Page LoginCheck(Database& db, const QHash<QString, QString>& fields, const QString& peer) {
    const QString userName = fields.value(QStringLiteral("UserName"));
    const QString password = fields.value(QStringLiteral("Password"));
    if (userName.isEmpty())
        return signInFormPage(200, QString());
    const WebSignIn account = WebSignIn::Check(db, userName, password, peer);
    if (!account.good())
        return signInFormPage(account.status, account.reason);
    const QString title = QStringLiteral("Tavlo - ") + account.organizationName;
    return {200,
            pageHtml(title, QStringLiteral("<h1>%1</h1>%2")
                                .arg(title.toHtmlEscaped(), boardTable(db, account))),
            account.userSys};
}

QString Html(const QString& title, const QString& body) {
    return pageHtml(title, body);
}

Page SignInForm(int status, const QString& reason) {
    return signInFormPage(status, reason);
}

} // namespace WebBoard
