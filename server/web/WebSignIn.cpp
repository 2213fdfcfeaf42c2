#include "WebSignIn.h"

#include "catalogue/PasswordCheck.h"
#include "store/Database.h"
#include <QSqlQuery>

namespace {

WebSignIn refused(int status, const QString& reason) {
    WebSignIn result;
    result.status = status;
    result.reason = reason;
    return result;
}

} // namespace

WebSignIn WebSignIn::Check(Database& db, const QString& userName, const QString& password,
                           const QString& peer) {
    const PasswordCheck check = PasswordCheck::Run(db, userName, password, peer);
    if (check.outcome == PasswordCheck::Outcome::Wait)
        return refused(429, check.waitText());
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT u.removed, o.disabled, o.organizationsys, o.name FROM "
                               "users u JOIN contact c ON c.contactsys = u.contactsys "
                               "JOIN organization o ON o.organizationsys = c.organizationsys "
                               "WHERE u.usersys = ?"),
                {check.userSys});
    if (check.outcome != PasswordCheck::Outcome::Good || !q.next())
        return refused(401, QStringLiteral("Invalid Login, please try again!"));
    if (q.value(0).toInt() != 0)
        return refused(403, QStringLiteral("Your account has been removed."));
    if (q.value(1).toInt() != 0)
        return refused(403, QStringLiteral("Your organization has been disabled."));
    WebSignIn result;
    result.status = 200;
    result.userSys = check.userSys;
    result.organizationSys = q.value(2).toLongLong();
    result.organizationName = q.value(3).toString();
    return result;
}
