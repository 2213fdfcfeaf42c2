#include "WebBoard.h"

#include "catalogue/Board.h"
#include "catalogue/PasswordCheck.h"
#include "store/Database.h"
#include "wire/Recordset.h"
#include <QSqlQuery>

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

struct Account {
    qint64 userSys = -1;
    qint64 organizationSys = 0;
    QString organizationName;
    bool removed = false;
    bool disabled = false;
};

Account accountOf(Database& db, qint64 userSys) {
    Account account;
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT u.usersys, u.removed, o.disabled, o.organizationsys, "
                               "o.name FROM users u "
                               "JOIN contact c ON c.contactsys = u.contactsys "
                               "JOIN organization o ON o.organizationsys = c.organizationsys "
                               "WHERE u.usersys = ?"),
                {userSys});
    if (q.next())
        account = {q.value(0).toLongLong(), q.value(3).toLongLong(), q.value(4).toString(),
                   q.value(1).toInt() != 0, q.value(2).toInt() != 0};
    return account;
}

QString cell(const wire::Recordset& rs, const char* column) {
    return rs.Fields(QString::fromLatin1(column)).Value().toString().trimmed().toHtmlEscaped();
}

QString boardTable(Database& db, const Account& account) {
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
    const PasswordCheck check = PasswordCheck::Run(db, userName, password, peer);
    if (check.outcome == PasswordCheck::Outcome::Wait)
        return signInFormPage(429, check.waitText());
    const Account account = accountOf(db, check.userSys);
    if (account.userSys < 0)
        return signInFormPage(401, QStringLiteral("Invalid Login, please try again!"));
    if (account.removed)
        return signInFormPage(403, QStringLiteral("Your account has been removed."));
    if (account.disabled)
        return signInFormPage(403, QStringLiteral("Your organization has been disabled."));
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
