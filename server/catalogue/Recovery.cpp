#include "Recovery.h"

#include "store/Database.h"
#include "store/PasswordHash.h"
#include "store/SessionStore.h"
#include <QCryptographicHash>
#include <QDateTime>
#include <QMutex>
#include <sodium.h>

namespace Recovery {
namespace {

QMutex& lock() {
    static QMutex mutex;
    return mutex;
}
QString& baseUrl() {
    static QString url = QStringLiteral("http://127.0.0.1:8080");
    return url;
}
QString addressKey(const QString& emailAddress) {
    return emailAddress.trimmed().toLower();
}

QString hashOf(const QString& token) {
    return QString::fromLatin1(
        QCryptographicHash::hash(token.toLatin1(), QCryptographicHash::Sha256).toHex());
}

QString stamp(const QDateTime& moment) {
    return moment.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

} // namespace

void SetPublicBaseUrl(const QString& url) {
    QMutexLocker guard(&lock());
    baseUrl() = url;
}

QString PublicBaseUrl() {
    QMutexLocker guard(&lock());
    return baseUrl();
}

QString NewLink(Database& db, qint64 userSys, const QString& baseUrl, int validSeconds) {
    unsigned char bytes[32];
    randombytes_buf(bytes, sizeof bytes);
    const QString token =
        QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(bytes), sizeof bytes).toHex());
    db.exec(QStringLiteral("UPDATE resettoken SET used = 1 WHERE usersys = ? AND used = 0"),
            {userSys});
    db.exec(QStringLiteral(
                "INSERT INTO resettoken (tokenhash, usersys, expires, used) VALUES (?, ?, ?, 0)"),
            {hashOf(token), userSys, stamp(QDateTime::currentDateTime().addSecs(validSeconds))});
    return baseUrl + QStringLiteral("/reset?token=") + token;
}

// The link waits in the store, so that whichever server takes the recovery mail adds it.
void Issue(Database& db, qint64 userSys, const QString& emailAddress) {
    const QString base = PublicBaseUrl();
    db.write([&] {
        const QString link = NewLink(db, userSys, base, 3600);
        db.exec(QStringLiteral("DELETE FROM pendinglink WHERE address = ?"),
                {addressKey(emailAddress)});
        db.exec(
            QStringLiteral("INSERT INTO pendinglink (address, link, expires) VALUES (?, ?, ?)"),
            {addressKey(emailAddress), link, stamp(QDateTime::currentDateTime().addSecs(3600))});
    });
}

std::optional<QString> TakeLink(Database& db, const QString& emailAddress) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT link, expires FROM pendinglink WHERE address = ?"),
                          {addressKey(emailAddress)});
    if (!q.next())
        return std::nullopt;
    const QString link = q.value(0).toString();
    const bool live = q.value(1).toString() >= stamp(QDateTime::currentDateTime());
    q.finish();
    db.exec(QStringLiteral("DELETE FROM pendinglink WHERE address = ?"),
            {addressKey(emailAddress)});
    return live ? std::optional(link) : std::nullopt;
}

bool HasLink(Database& db, const QString& emailAddress) {
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT 1 FROM pendinglink WHERE address = ? AND expires >= ?"),
                {addressKey(emailAddress), stamp(QDateTime::currentDateTime())});
    return q.next();
}

std::optional<qint64> UserOfToken(Database& db, const QString& token) {
    if (token.size() != 64)
        return std::nullopt;
    QSqlQuery q = db.exec(QStringLiteral("SELECT usersys, expires FROM resettoken WHERE "
                                         "tokenhash = ? AND used = 0"),
                          {hashOf(token)});
    if (!q.next() || q.value(1).toString() < stamp(QDateTime::currentDateTime()))
        return std::nullopt;
    return q.value(0).toLongLong();
}

bool Reset(Database& db, const QString& token, const QString& newPassword) {
    const auto user = UserOfToken(db, token);
    if (!user)
        return false;
    const QString hashed = PasswordHash::hash(newPassword);
    const bool reset = db.write([&] {
        QSqlQuery spent = db.exec(
            QStringLiteral("UPDATE resettoken SET used = 1 WHERE tokenhash = ? AND used = 0"),
            {hashOf(token)});
        if (spent.numRowsAffected() != 1)
            return false;
        db.exec(QStringLiteral("UPDATE users SET passwordhash = ? WHERE usersys = ?"),
                {hashed, *user});
        return true;
    });
    if (reset)
        SessionStore::CloseAllOf(db, *user);
    return reset;
}

} // namespace Recovery
