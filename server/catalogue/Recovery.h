#pragma once

#include <QString>
#include <optional>

class Database;

// Password recovery without a secret on the wire: a one-time reset link, valid an hour, that
// reaches the user only inside the recovery mail.
namespace Recovery {

// The address the links point at ("http://host:port"); set when serving starts.
void SetPublicBaseUrl(const QString& url);
QString PublicBaseUrl();

// Inside a write: a new token for the user, valid for that long, with the user's earlier ones
// spent (one pending link per account); answers the link at baseUrl that carries it.
QString NewLink(Database& db, qint64 userSys, const QString& baseUrl, int validSeconds);
// Makes a token for the user, keeps only its hash among the tokens, and keeps the link for
// the next recovery mail to that address (in the store, for any server to take).
void Issue(Database& db, qint64 userSys, const QString& emailAddress);
// Inside a write: the pending link for a recovery mail to that address (taken: at most once),
// if any.
std::optional<QString> TakeLink(Database& db, const QString& emailAddress);
// Whether a recovery mail to that address has a link waiting.
bool HasLink(Database& db, const QString& emailAddress);

// The user a token is good for, if it is known, unused and not expired.
std::optional<qint64> UserOfToken(Database& db, const QString& token);
// Sets the new password, spends the token and ends the user's sessions; false when the token
// isn't good.
bool Reset(Database& db, const QString& token, const QString& newPassword);

} // namespace Recovery
