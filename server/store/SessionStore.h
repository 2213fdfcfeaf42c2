#pragma once

#include <QString>
#include <optional>

class Database;

// Signed-in sessions, kept in the database so that every server process on it knows them: a
// random token in a cookie stands for a user until it has gone unused for eight hours, or the
// user signs out, or the user's password is reset. Only a hash of the token is stored.
namespace SessionStore {

constexpr const char* kCookie = "TavloSession";
constexpr qint64 kIdleSeconds = 8 * 3600;

// A new session for the user; the token to put in the cookie.
QString Open(Database& db, qint64 userSys);
// The user of a live session; its use is noted (at most once a minute, so polling doesn't
// write on every statement).
std::optional<qint64> UserOf(Database& db, const QString& token);
void Close(Database& db, const QString& token);
void CloseAllOf(Database& db, qint64 userSys);
// Drops sessions that have lapsed; returns how many.
int PurgeLapsed(Database& db);
// The Set-Cookie value that hands out the token (HttpOnly, SameSite=Strict, Secure when
// asked), or with an empty token one that ends the session in the browser.
QByteArray SetCookie(const QString& token, bool secure);
// Goes up whenever this process ends a session, so that copies of callers kept elsewhere
// can tell they may be stale.
quint64 Generation();
// Sessions ended elsewhere (another server): what this process keeps of them is outdated.
void Outdate();
// The token in a Cookie header, or an empty text.
QString TokenIn(const QString& cookieHeader);

} // namespace SessionStore
