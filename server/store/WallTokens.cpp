#include "WallTokens.h"

#include "Database.h"
#include <QCryptographicHash>
#include <QDateTime>
#include <sodium.h>
#include <stdexcept>

namespace WallTokens {
namespace {

QString hashOf(const QString& token) {
    return QString::fromLatin1(
        QCryptographicHash::hash(token.toLatin1(), QCryptographicHash::Sha256).toHex());
}

QString now() {
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

QString randomToken() {
    if (sodium_init() < 0)
        throw std::runtime_error("libsodium can't start");
    unsigned char bytes[32];
    randombytes_buf(bytes, sizeof bytes);
    return QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(bytes), sizeof bytes).toHex());
}

} // namespace

Made Make(Database& db, qint64 organizationSys, const QString& label, qint64 byUserSys) {
    Made made;
    made.token = randomToken();
    db.writeQuietly([&] {
        made.id = db.nextKey(QStringLiteral("walltoken"), QStringLiteral("tokensys"));
        db.exec(QStringLiteral("INSERT INTO walltoken (tokensys, tokenhash, organizationsys, "
                               "label, createdby, createdat) VALUES (?, ?, ?, ?, ?, ?)"),
                {made.id, hashOf(made.token), organizationSys, label, byUserSys, now()});
    });
    return made;
}

std::vector<Listed> List(Database& db, qint64 organizationSys) {
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT w.tokensys, w.label, w.createdat, c.firstname, c.lastname, "
                               "w.revokedat FROM walltoken w LEFT JOIN users u ON u.usersys = "
                               "w.createdby LEFT JOIN contact c ON c.contactsys = u.contactsys "
                               "WHERE w.organizationsys = ? ORDER BY w.tokensys"),
                {organizationSys});
    std::vector<Listed> tokens;
    while (q.next())
        tokens.push_back({q.value(0).toLongLong(), q.value(1).toString(), q.value(2).toString(),
                          q.value(3).toString() + QLatin1Char(' ') + q.value(4).toString(),
                          q.value(5).toString()});
    return tokens;
}

bool Revoke(Database& db, qint64 organizationSys, qint64 id) {
    return db.writeQuietly([&] {
        return db.exec(QStringLiteral("UPDATE walltoken SET revokedat = COALESCE(revokedat, ?) "
                                      "WHERE tokensys = ? AND organizationsys = ?"),
                       {now(), id, organizationSys})
                   .numRowsAffected() > 0;
    });
}

std::optional<qint64> OrganizationOf(Database& db, const QString& token) {
    if (token.size() != 64)
        return std::nullopt;
    QSqlQuery q = db.exec(QStringLiteral("SELECT w.organizationsys FROM walltoken w JOIN "
                                         "organization o ON o.organizationsys = w.organizationsys "
                                         "WHERE w.tokenhash = ? AND w.revokedat IS NULL AND "
                                         "o.disabled = 0"),
                          {hashOf(token)});
    if (!q.next())
        return std::nullopt;
    return q.value(0).toLongLong();
}

} // namespace WallTokens
