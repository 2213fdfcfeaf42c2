#include "CallerLookup.h"

#include "store/Database.h"
#include "store/SessionStore.h"
#include <QDateTime>
#include <QHash>
#include <QMutex>

namespace {

// The right to change another person's status.
constexpr qint64 kChangeOthersStatus = 10000016;
constexpr qint64 kKeepMs = 10'000;

struct Kept {
    Caller caller;
    qint64 at = 0;
    quint64 generation = 0;
};

QMutex g_lock;
QHash<QString, Kept> g_kept;

Caller lookUp(Database& db, const QString& sessionToken, const QString& peer) {
    Caller caller;
    caller.peer = peer;
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

} // namespace

Caller CallerOf(Database& db, const QString& sessionToken, const QString& peer) {
    if (sessionToken.isEmpty()) {
        Caller anonymous;
        anonymous.peer = peer;
        return anonymous;
    }
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const quint64 generation = SessionStore::Generation();
    {
        QMutexLocker hold(&g_lock);
        const auto found = g_kept.constFind(sessionToken);
        if (found != g_kept.cend() && found->generation == generation &&
            now - found->at < kKeepMs) {
            Caller caller = found->caller;
            caller.peer = peer;
            return caller;
        }
    }
    const Caller caller = lookUp(db, sessionToken, peer);
    QMutexLocker hold(&g_lock);
    if (g_kept.size() > 20'000)
        g_kept.clear();
    if (caller.signedIn())
        g_kept.insert(sessionToken, {caller, now, generation});
    else
        g_kept.remove(sessionToken);
    return caller;
}
