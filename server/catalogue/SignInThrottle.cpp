#include "SignInThrottle.h"

#include "LogText.h"
#include "store/Database.h"
#include <QDateTime>
#include <algorithm>

namespace SignInThrottle {
namespace {

QString accountKey(const QString& userName) {
    return QStringLiteral("account ") + userName.trimmed().toLower().left(64);
}

QString addressKey(const QString& peer) {
    return QStringLiteral("address ") + peer;
}

QString stamp(const QDateTime& utc) {
    return utc.toString(Qt::ISODateWithMs);
}

void fail(Database& db, const QString& key) {
    const QDateTime now = QDateTime::currentDateTimeUtc();
    db.writeQuietly([&] {
        QSqlQuery counted =
            db.exec(QStringLiteral(
                        "INSERT INTO signinfailure (key, failures, lastfailure) VALUES (?, 1, ?) "
                        "ON CONFLICT (key) DO UPDATE SET failures = signinfailure.failures + 1, "
                        "lastfailure = excluded.lastfailure RETURNING failures"),
                    {key, stamp(now)});
        const int failures = counted.next() ? counted.value(0).toInt() : 1;
        counted.finish();
        if (failures < kFreeFailures)
            return;
        const int doublings = std::min(failures - kFreeFailures, 16);
        const qint64 wait = std::min<qint64>(1000LL << doublings, kLongestWaitMs);
        db.exec(QStringLiteral("UPDATE signinfailure SET nextallowed = ? WHERE key = ?"),
                {stamp(now.addMSecs(wait)), key});
        LogLine(QStringLiteral("sign-in: %1 failures for %2; the next attempt waits %3 s")
                    .arg(failures)
                    .arg(key)
                    .arg(double(wait) / 1000.0));
    });
}

} // namespace

qint64 WaitMs(Database& db, const QString& userName, const QString& peer) {
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT nextallowed FROM signinfailure WHERE key IN (?, ?) "
                               "AND nextallowed IS NOT NULL"),
                {accountKey(userName), addressKey(peer)});
    const QDateTime now = QDateTime::currentDateTimeUtc();
    qint64 wait = 0;
    while (q.next())
        wait = std::max(
            wait, now.msecsTo(QDateTime::fromString(q.value(0).toString(), Qt::ISODateWithMs)));
    return wait;
}

void Failed(Database& db, const QString& userName, const QString& peer) {
    fail(db, accountKey(userName));
    fail(db, addressKey(peer));
}

void Succeeded(Database& db, const QString& userName, const QString& peer) {
    db.writeQuietly([&] {
        db.exec(QStringLiteral("DELETE FROM signinfailure WHERE key IN (?, ?)"),
                {accountKey(userName), addressKey(peer)});
    });
}

} // namespace SignInThrottle
