#include "SessionStore.h"

#include "Database.h"
#include <QCryptographicHash>
#include <QDateTime>
#include <atomic>
#include <sodium.h>

namespace SessionStore {
namespace {

constexpr qint64 kTouchSeconds = 60;

QString hashOf(const QString& token) {
    return QString::fromLatin1(
        QCryptographicHash::hash(token.toLatin1(), QCryptographicHash::Sha256).toHex());
}

QString stamp(const QDateTime& moment) {
    return moment.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

QDateTime now() {
    return QDateTime::currentDateTimeUtc();
}

std::atomic<quint64> g_generation{0};

} // namespace

QString Open(Database& db, qint64 userSys) {
    if (sodium_init() < 0)
        throw std::runtime_error("libsodium can't start");
    unsigned char bytes[32];
    randombytes_buf(bytes, sizeof bytes);
    const QString token =
        QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(bytes), sizeof bytes).toHex());
    db.writeQuietly([&] {
        db.exec(QStringLiteral("INSERT INTO websession (tokenhash, usersys, lastseen) VALUES "
                               "(?, ?, ?)"),
                {hashOf(token), userSys, stamp(now())});
    });
    return token;
}

std::optional<qint64> UserOf(Database& db, const QString& token) {
    if (token.size() != 64)
        return std::nullopt;
    const QString key = hashOf(token);
    QSqlQuery q = db.exec(
        QStringLiteral("SELECT usersys, lastseen FROM websession WHERE tokenhash = ?"), {key});
    if (!q.next())
        return std::nullopt;
    const qint64 userSys = q.value(0).toLongLong();
    QDateTime seen = QDateTime::fromString(q.value(1).toString(), Qt::ISODate);
    seen.setTimeSpec(Qt::UTC);
    q.finish();
    const qint64 idle = seen.secsTo(now());
    if (idle > kIdleSeconds) {
        Close(db, token);
        return std::nullopt;
    }
    if (idle >= kTouchSeconds)
        db.writeQuietly([&] {
            db.exec(QStringLiteral("UPDATE websession SET lastseen = ? WHERE tokenhash = ?"),
                    {stamp(now()), key});
        });
    return userSys;
}

quint64 Generation() {
    return g_generation.load();
}

void Outdate() {
    ++g_generation;
}

void Close(Database& db, const QString& token) {
    ++g_generation;
    db.writeQuietly([&] {
        db.exec(QStringLiteral("DELETE FROM websession WHERE tokenhash = ?"), {hashOf(token)});
    });
    db.sessionsEnded();
}

void CloseAllOf(Database& db, qint64 userSys) {
    ++g_generation;
    db.writeQuietly(
        [&] { db.exec(QStringLiteral("DELETE FROM websession WHERE usersys = ?"), {userSys}); });
    db.sessionsEnded();
}

int PurgeLapsed(Database& db) {
    return db.writeQuietly([&] {
        QSqlQuery q = db.exec(QStringLiteral("DELETE FROM websession WHERE lastseen < ?"),
                              {stamp(now().addSecs(-kIdleSeconds))});
        return q.numRowsAffected();
    });
}

QByteArray SetCookie(const QString& token, bool secure) {
    QString cookie = QString::fromLatin1(kCookie) + QLatin1Char('=') + token +
                     QStringLiteral("; Path=/; HttpOnly; SameSite=Strict");
    if (token.isEmpty())
        cookie += QStringLiteral("; Max-Age=0");
    if (secure)
        cookie += QStringLiteral("; Secure");
    return cookie.toLatin1();
}

QString TokenIn(const QString& cookieHeader) {
    const QString wanted = QString::fromLatin1(kCookie) + QLatin1Char('=');
    for (const QString& part : cookieHeader.split(QLatin1Char(';'))) {
        const QString cookie = part.trimmed();
        if (cookie.startsWith(wanted))
            return cookie.mid(wanted.size());
    }
    return {};
}

} // namespace SessionStore
