#include "People.h"

#include "BadInput.h"
#include "Groups.h"
#include "InputRules.h"
#include "Locations.h"
#include "store/Database.h"
#include "store/SessionStore.h"
#include <QDate>

namespace People {
namespace {

bool exists(Database& db, const QString& sql, const QVariantList& values) {
    QSqlQuery q = db.exec(sql, values);
    return q.next();
}

// Contact and user keys never overlap: the client names a friend by either and the server
// tries the contact first.
qint64 personKey(Database& db, const QString& table, const QString& column) {
    if (!db.isPostgres()) {
        QSqlQuery top = db.exec(QStringLiteral("SELECT MAX(k) FROM (SELECT MAX(contactsys) AS k "
                                               "FROM contact UNION ALL SELECT MAX(usersys) FROM "
                                               "users) t"));
        return top.next() ? top.value(0).toLongLong() + 1 : 1;
    }
    for (;;) {
        const qint64 key = db.nextKey(table, column);
        if (!exists(db,
                    QStringLiteral("SELECT 1 FROM contact WHERE contactsys = ? UNION ALL "
                                   "SELECT 1 FROM users WHERE usersys = ?"),
                    {key, key}))
            return key;
    }
}

QVariant locationKey(Database& db, qint64 organizationSys, const QString& name) {
    return name.isEmpty() ? QVariant() : QVariant(Locations::find(db, organizationSys, name));
}

// Ends the account's sessions inside the write; the callers kept in memory are told after.
void closeAccount(Database& db, qint64 userSys) {
    db.exec(QStringLiteral("UPDATE users SET removed = 1 WHERE usersys = ?"), {userSys});
    db.exec(QStringLiteral("DELETE FROM websession WHERE usersys = ?"), {userSys});
}

void sessionsEnded(Database& db) {
    SessionStore::Outdate();
    db.sessionsEnded();
}

} // namespace

PersonInput checked(const PersonInput& input) {
    PersonInput out;
    out.first = InputRules::name(input.first, QStringLiteral("the first name"));
    out.last = InputRules::name(input.last, QStringLiteral("the last name"));
    out.user = InputRules::userName(input.user);
    out.email = InputRules::emailAddress(input.email);
    out.ext = InputRules::extension(input.ext);
    out.group = input.group.trimmed();
    out.location = input.location.trimmed();
    out.admin = input.admin;
    return out;
}

AddedPerson insert(Database& db, qint64 organizationSys, const PersonInput& person,
                   const QString& passwordHash) {
    if (exists(db, QStringLiteral("SELECT 1 FROM users WHERE LOWER(username) = LOWER(?)"),
               {person.user}))
        throw BadInput(QStringLiteral("user name '%1' is taken").arg(person.user));
    const QVariant group = person.group.isEmpty()
                               ? QVariant()
                               : QVariant(Groups::find(db, organizationSys, person.group));
    const QVariant location = locationKey(db, organizationSys, person.location);
    AddedPerson added;
    added.user = person.user;
    added.contactSys = personKey(db, QStringLiteral("contact"), QStringLiteral("contactsys"));
    db.exec(QStringLiteral("INSERT INTO contact (contactsys, organizationsys, "
                           "organizationlocationsys, firstname, lastname, ext, emailaddress, "
                           "picturelocation, dateadded) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
            {added.contactSys, organizationSys, location, person.first, person.last,
             person.ext.isEmpty() ? QVariant() : QVariant(person.ext), person.email,
             QStringLiteral("pictures/p%1.png").arg(added.contactSys),
             QDate::currentDate().toString(QStringLiteral("M/d/yyyy"))});
    added.userSys = personKey(db, QStringLiteral("users"), QStringLiteral("usersys"));
    db.exec(QStringLiteral("INSERT INTO users (usersys, contactsys, username, passwordhash, "
                           "removed) VALUES (?, ?, ?, ?, 0)"),
            {added.userSys, added.contactSys, person.user, passwordHash});
    if (!group.isNull())
        db.exec(QStringLiteral("INSERT INTO contactgroup (groupsys, contactsys) VALUES (?, ?)"),
                {group, added.contactSys});
    if (person.admin)
        db.exec(QStringLiteral("INSERT INTO usersecurity (usersys, securityobjectsys) VALUES "
                               "(?, ?)"),
                {added.userSys, kAdministratorRight});
    return added;
}

AddedPerson add(Database& db, qint64 organizationSys, const PersonInput& input,
                const MailSetup& mail) {
    const PersonInput person = checked(input);
    const FirstPassword first = Welcome::prepare(mail);
    return db.write([&] {
        AddedPerson added = insert(db, organizationSys, person, first.hash);
        added.password = first.shown;
        if (mail.mails())
            Welcome::mailLink(db, mail, added.userSys, true);
        return added;
    });
}

void edit(Database& db, qint64 organizationSys, qint64 contactSys, const PersonInput& input) {
    PersonInput person = input;
    person.user = QStringLiteral("unchanged");
    person = checked(person);
    db.write([&] {
        if (!exists(db,
                    QStringLiteral("SELECT 1 FROM contact WHERE contactsys = ? AND "
                                   "organizationsys = ? AND removed = 0"),
                    {contactSys, organizationSys}))
            throw BadInput(QStringLiteral("there is no person %1").arg(contactSys));
        db.exec(QStringLiteral("UPDATE contact SET firstname = ?, lastname = ?, emailaddress = ?, "
                               "ext = ?, organizationlocationsys = ? WHERE contactsys = ?"),
                {person.first, person.last, person.email,
                 person.ext.isEmpty() ? QVariant() : QVariant(person.ext),
                 locationKey(db, organizationSys, person.location), contactSys});
    });
}

qint64 findUser(Database& db, const QString& userName) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT usersys FROM users WHERE LOWER(username) = "
                                         "LOWER(?) ORDER BY usersys"),
                          {userName.trimmed()});
    if (!q.next())
        throw BadInput(QStringLiteral("there is no user '%1'").arg(userName.trimmed()));
    return q.value(0).toLongLong();
}

qint64 userOfContact(Database& db, qint64 organizationSys, qint64 contactSys) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT u.usersys FROM users u JOIN contact c ON "
                                         "c.contactsys = u.contactsys WHERE c.contactsys = ? AND "
                                         "c.organizationsys = ? ORDER BY u.usersys"),
                          {contactSys, organizationSys});
    if (!q.next())
        throw BadInput(QStringLiteral("person %1 has no account here").arg(contactSys));
    return q.value(0).toLongLong();
}

void disable(Database& db, qint64 userSys) {
    db.write([&] { closeAccount(db, userSys); });
    sessionsEnded(db);
}

void remove(Database& db, qint64 userSys) {
    db.write([&] {
        closeAccount(db, userSys);
        db.exec(QStringLiteral("UPDATE contact SET removed = 1 WHERE contactsys = (SELECT "
                               "contactsys FROM users WHERE usersys = ?)"),
                {userSys});
    });
    sessionsEnded(db);
}

void setRights(Database& db, qint64 userSys, const Rights& rights) {
    db.write([&] {
        db.exec(QStringLiteral("DELETE FROM usersecurity WHERE usersys = ? AND "
                               "securityobjectsys IN (?, ?)"),
                {userSys, kAdministratorRight, kOthersStatusRight});
        for (const auto& [held, right] : {std::pair{rights.administrator, kAdministratorRight},
                                          std::pair{rights.othersStatus, kOthersStatusRight}})
            if (held)
                db.exec(QStringLiteral("INSERT INTO usersecurity (usersys, securityobjectsys) "
                                       "VALUES (?, ?)"),
                        {userSys, right});
    });
    SessionStore::Outdate(); // kept callers carry the rights
}

} // namespace People
