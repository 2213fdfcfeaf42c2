#pragma once

#include <QString>
#include <optional>
#include <vector>

class Database;

// Read-only display tokens for wall screens: an administrator makes one for the organisation,
// a reception screen opens the board with it, and a revoked token opens nothing from then on.
// Only a SHA-256 hash of each token is kept; revoked ones stay listed.
namespace WallTokens {

struct Listed {
    qint64 id = 0;
    QString label;
    QString createdAt; // local time, "yyyy-MM-ddTHH:mm:ss"
    QString createdBy; // the administrator's name
    QString revokedAt; // empty while it works
};

struct Made {
    qint64 id = 0;
    QString token; // shown once; only its hash is kept
};

Made Make(Database& db, qint64 organizationSys, const QString& label, qint64 byUserSys);
std::vector<Listed> List(Database& db, qint64 organizationSys);
// False when the organisation has no such token.
bool Revoke(Database& db, qint64 organizationSys, qint64 id);
// The organisation a working token opens.
std::optional<qint64> OrganizationOf(Database& db, const QString& token);

} // namespace WallTokens
