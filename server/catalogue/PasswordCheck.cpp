#include "PasswordCheck.h"

#include "LogText.h"
#include "SignInThrottle.h"
#include "store/Database.h"
#include "store/PasswordHash.h"

PasswordCheck PasswordCheck::Run(Database& db, const QString& userName, const QString& password,
                                 const QString& peer) {
    PasswordCheck check;
    if (const qint64 wait = SignInThrottle::WaitMs(db, userName, peer); wait > 0) {
        check.outcome = Outcome::Wait;
        check.waitMs = wait;
        LogLine(QStringLiteral("sign-in for \"%1\" from %2 turned away: %3 ms still to wait")
                    .arg(userName.left(64), peer)
                    .arg(wait));
        return check;
    }
    QSqlQuery q = db.exec(QStringLiteral("SELECT usersys, passwordhash FROM users WHERE "
                                         "LOWER(username) = LOWER(?)"),
                          {userName});
    bool known = false;
    while (q.next()) {
        known = true;
        if (PasswordHash::verify(q.value(1).toString(), password))
            check.userSys = q.value(0).toLongLong();
    }
    if (!known)
        PasswordHash::verifyNobody(password);
    if (check.userSys >= 0) {
        check.outcome = Outcome::Good;
        SignInThrottle::Succeeded(db, userName, peer);
    } else {
        SignInThrottle::Failed(db, userName, peer);
    }
    return check;
}

QString PasswordCheck::waitText() const {
    return QStringLiteral("Too many failed sign-ins for this account or from this address. "
                          "Try again in %1 seconds.")
        .arg((waitMs + 999) / 1000);
}
