// The administration's people: the list, one person, and what is done to them.
#include "AdminApiHandlers.h"
#include "setup/BadInput.h"
#include "setup/Groups.h"
#include "setup/InputRules.h"
#include "setup/People.h"
#include "setup/Welcome.h"
#include "store/Database.h"

namespace AdminApi {
namespace {

const QString kPeople = QStringLiteral(
    "SELECT c.contactsys, u.usersys, c.firstname, c.lastname, u.username, c.emailaddress, "
    "c.ext, l.locationname, s.statustext, u.removed, "
    "EXISTS (SELECT 1 FROM usersecurity r WHERE r.usersys = u.usersys AND "
    "r.securityobjectsys = ?), EXISTS (SELECT 1 FROM usersecurity r WHERE r.usersys = "
    "u.usersys AND r.securityobjectsys = ?) FROM contact c "
    "LEFT JOIN users u ON u.contactsys = c.contactsys "
    "LEFT JOIN location l ON l.organizationlocationsys = c.organizationlocationsys "
    "LEFT JOIN status s ON s.statussys = c.statussys "
    "WHERE c.organizationsys = ? AND c.removed = 0 AND (? < 0 OR c.contactsys = ?) "
    "ORDER BY c.lastname, c.firstname, c.contactsys");

QJsonArray people(Database& db, qint64 organizationSys, qint64 contactSys) {
    QSqlQuery q = db.exec(kPeople, {People::kAdministratorRight, People::kOthersStatusRight,
                                    organizationSys, contactSys, contactSys});
    QJsonArray out;
    while (q.next()) {
        const auto text = [&](int i) {
            return q.value(i).isNull() ? QJsonValue() : QJsonValue(q.value(i).toString());
        };
        out.append(
            QJsonObject{{QStringLiteral("contact"), q.value(0).toLongLong()},
                        {QStringLiteral("user"),
                         q.value(1).isNull() ? QJsonValue() : QJsonValue(q.value(1).toLongLong())},
                        {QStringLiteral("first"), text(2)},
                        {QStringLiteral("last"), text(3)},
                        {QStringLiteral("userName"), text(4)},
                        {QStringLiteral("email"), text(5)},
                        {QStringLiteral("ext"), text(6)},
                        {QStringLiteral("location"), text(7)},
                        {QStringLiteral("status"), text(8)},
                        {QStringLiteral("disabled"), q.value(9).toInt() == 1},
                        {QStringLiteral("administrator"), q.value(10).toBool()},
                        {QStringLiteral("othersStatus"), q.value(11).toBool()}});
    }
    return out;
}

PersonInput personFields(const Fields& f) {
    return {f.value(QStringLiteral("first")),
            f.value(QStringLiteral("last")),
            f.value(QStringLiteral("user")),
            f.value(QStringLiteral("email")),
            f.value(QStringLiteral("ext")),
            f.value(QStringLiteral("group")),
            f.value(QStringLiteral("location")),
            InputRules::yesNo(f.value(QStringLiteral("admin")), QStringLiteral("admin"))};
}

// The account of the person the fields name; an administrator doesn't close or demote their
// own, so that the organisation always keeps one.
qint64 othersAccount(Database& db, qint64 organizationSys, qint64 userSys, const Fields& f) {
    const qint64 account = People::userOfContact(db, organizationSys, keyField(f, "contact"));
    if (account == userSys)
        throw BadInput(QStringLiteral("that is your own account; another administrator must "
                                      "change it"));
    return account;
}

QJsonObject done(const char* what) {
    return {{QStringLiteral("done"), QLatin1String(what)}};
}

} // namespace

Reply listPeople(Database& db, qint64 organizationSys, qint64, const Fields&) {
    return ok(people(db, organizationSys, -1));
}

Reply onePerson(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    const qint64 contactSys = keyField(fields, "contact");
    const QJsonArray found = people(db, organizationSys, contactSys);
    if (found.isEmpty())
        return error(404, QStringLiteral("There is no such person."));
    QJsonObject person = found.first().toObject();
    QJsonArray groups;
    for (const QJsonValue group : Groups::list(db, organizationSys))
        if (group[QStringLiteral("members")].toArray().contains(contactSys))
            groups.append(group[QStringLiteral("group")]);
    person.insert(QStringLiteral("groups"), groups);
    return ok(person);
}

Reply addPerson(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    const AddedPerson added = People::add(db, organizationSys, personFields(fields), mailSetup());
    QJsonObject out{{QStringLiteral("contact"), added.contactSys},
                    {QStringLiteral("user"), added.userSys}};
    if (added.password.isEmpty())
        out.insert(QStringLiteral("mailed"), true);
    else
        out.insert(QStringLiteral("password"), added.password);
    return ok(out);
}

Reply editPerson(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    People::edit(db, organizationSys, keyField(fields, "contact"), personFields(fields));
    return ok(done("edited"));
}

Reply disablePerson(Database& db, qint64 organizationSys, qint64 userSys, const Fields& fields) {
    People::disable(db, othersAccount(db, organizationSys, userSys, fields));
    return ok(done("disabled"));
}

Reply removePerson(Database& db, qint64 organizationSys, qint64 userSys, const Fields& fields) {
    People::remove(db, othersAccount(db, organizationSys, userSys, fields));
    return ok(done("removed"));
}

Reply setRights(Database& db, qint64 organizationSys, qint64 userSys, const Fields& fields) {
    const Rights rights{
        InputRules::yesNo(fields.value(QStringLiteral("admin")), QStringLiteral("admin")),
        InputRules::yesNo(fields.value(QStringLiteral("othersStatus")),
                          QStringLiteral("othersStatus"))};
    People::setRights(db, othersAccount(db, organizationSys, userSys, fields), rights);
    return ok(done("rights set"));
}

Reply sendResetLink(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    const MailSetup mail = mailSetup();
    if (!mail.mails())
        return error(409, QStringLiteral("The server mails no links: it was started without "
                                         "--public-url."));
    const qint64 account = People::userOfContact(db, organizationSys, keyField(fields, "contact"));
    db.write([&] { Welcome::mailLink(db, mail, account, false); });
    return ok(done("mailed"));
}

} // namespace AdminApi
