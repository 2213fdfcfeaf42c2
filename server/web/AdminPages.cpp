#include "AdminPages.h"

#include "catalogue/Board.h"
#include "store/Database.h"
#include "wire/Recordset.h"
#include <QSqlQuery>

namespace AdminPages {
namespace {

using WebBoard::Page;

Page message(int status, const QString& title, const QString& text) {
    return {status, WebBoard::Html(title, QStringLiteral("<h1>%1</h1><p>%2</p>")
                                              .arg(title.toHtmlEscaped(), text.toHtmlEscaped()))};
}

QString cell(const wire::Recordset& rs, const char* column) {
    return rs.Fields(QString::fromLatin1(column)).Value().toString().trimmed().toHtmlEscaped();
}

struct Organisation {
    qint64 sys = 0;
    QString name;
};

Organisation organisationOf(Database& db, qint64 userSys) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT o.organizationsys, o.name FROM users u "
                                         "JOIN contact c ON c.contactsys = u.contactsys "
                                         "JOIN organization o ON o.organizationsys = "
                                         "c.organizationsys WHERE u.usersys = ?"),
                          {userSys});
    if (!q.next())
        return {};
    return {q.value(0).toLongLong(), q.value(1).toString()};
}

QString personLink(const wire::Recordset& rs) {
    const QVariant user = rs.Fields(QStringLiteral("UserSys")).Value();
    return QStringLiteral(
               "/Administrator.asp?p=%1&amp;v=%2&amp;r=0&amp;visit_num=0&amp;sentby=menu")
        .arg(cell(rs, "ContactSys"), user.isNull() ? QStringLiteral("0") : user.toString());
}

Page peopleList(Database& db, qint64 userSys, const Organisation& org) {
    wire::Recordset rs(
        Board::people(db, userSys, QStringLiteral("c.organizationsys = ?"), {org.sys}));
    QString rows;
    for (; !rs.Eof(); rs.MoveNext())
        rows += QStringLiteral("<tr><td><a href=\"%1\">%2, %3</a></td><td>%4</td><td>%5</td>"
                               "<td>%6</td></tr>")
                    .arg(personLink(rs), cell(rs, "LastName"), cell(rs, "FirstName"),
                         cell(rs, "Ext"), cell(rs, "UserName"), cell(rs, "Status"));
    const QString title = QStringLiteral("Tavlo Administration - ") + org.name;
    return {200, WebBoard::Html(title, QStringLiteral("<h1>%1</h1><table><tr><th>Name</th>"
                                                      "<th>Ext</th><th>User Name</th>"
                                                      "<th>Status</th></tr>%2</table>")
                                           .arg(title.toHtmlEscaped(), rows))};
}

Page personPage(Database& db, qint64 userSys, const Organisation& org, qint64 contactSys) {
    wire::Recordset rs(Board::people(db, userSys,
                                     QStringLiteral("c.contactsys = ? AND c.organizationsys = ?"),
                                     {contactSys, org.sys}));
    if (rs.Eof())
        return message(404, QStringLiteral("Tavlo Administration"),
                       QStringLiteral("No such person."));
    const QString name = cell(rs, "FirstName") + QLatin1Char(' ') + cell(rs, "LastName");
    QString rows;
    const std::pair<const char*, const char*> fields[] = {
        {"Position", "Position"},   {"Extension", "Ext"},      {"Phone", "Phone"},
        {"E-mail", "EmailAddress"}, {"User Name", "UserName"}, {"Status", "Status"},
        {"Comment", "comment"}};
    for (const auto& [label, column] : fields)
        rows += QStringLiteral("<tr><th>%1</th><td>%2</td></tr>")
                    .arg(QString::fromLatin1(label), cell(rs, column));
    return {200,
            WebBoard::Html(name, QStringLiteral("<h1>%1</h1><table>%2</table><p><a "
                                                "href=\"/Administrator.asp\">All people</a></p>")
                                     .arg(name, rows))};
}

} // namespace

bool IsAdministrator(Database& db, qint64 userSys) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT COUNT(*) FROM usersecurity WHERE usersys = ? "
                                         "AND securityobjectsys = ?"),
                          {userSys, kAdministratorRight});
    return q.next() && q.value(0).toInt() > 0;
}

Page Administrator(Database& db, qint64 userSys, const QHash<QString, QString>& fields) {
    if (userSys < 0)
        return WebBoard::SignInForm(401, QStringLiteral("Please sign in."));
    if (!IsAdministrator(db, userSys))
        return message(403, QStringLiteral("Tavlo Administration"),
                       QStringLiteral("You do not have administrator rights."));
    const Organisation org = organisationOf(db, userSys);
    const QString person = fields.value(QStringLiteral("p"));
    if (person.isEmpty())
        return peopleList(db, userSys, org);
    bool ok = false;
    const qint64 contactSys = person.toLongLong(&ok);
    bool userOk = true;
    fields.value(QStringLiteral("v"), QStringLiteral("0")).toLongLong(&userOk);
    if (!ok || !userOk)
        return message(400, QStringLiteral("Tavlo Administration"),
                       QStringLiteral("The address names no person."));
    return personPage(db, userSys, org, contactSys);
}

} // namespace AdminPages
