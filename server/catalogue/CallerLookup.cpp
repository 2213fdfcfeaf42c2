#include "CallerLookup.h"

#include "store/Database.h"
#include "store/SessionStore.h"

namespace {

// The right to change another person's status.
constexpr qint64 kChangeOthersStatus = 10000016;

} // namespace

Caller CallerOf(Database& db, const QString& sessionToken, const QString& peer) {
    Caller caller;
    caller.peer = peer;
    if (sessionToken.isEmpty())
        return caller;
    const auto userSys = SessionStore::UserOf(db, sessionToken);
    if (!userSys)
        return caller;
    QSqlQuery q = db.exec(
        QStringLiteral("SELECT c.contactsys, c.organizationsys, c.emailaddress, EXISTS (SELECT 1 "
                       "FROM usersecurity s WHERE s.usersys = u.usersys AND "
                       "s.securityobjectsys = ?) FROM users u JOIN contact c ON c.contactsys = "
                       "u.contactsys JOIN organization o ON o.organizationsys = c.organizationsys "
                       "WHERE u.usersys = ? AND u.removed = 0 AND o.disabled = 0"),
        {kChangeOthersStatus, *userSys});
    if (!q.next())
        return caller;
    caller.userSys = *userSys;
    caller.contactSys = q.value(0).toLongLong();
    caller.organizationSys = q.value(1).toLongLong();
    caller.emailAddress = q.value(2).toString();
    caller.mayChangeOthersStatus = q.value(3).toBool();
    return caller;
}
