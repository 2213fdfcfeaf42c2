#pragma once

#include <QString>

class Database;

// Slows down password guessing: after five failed sign-ins for one account, or from one
// address, each further attempt has to wait, one second after the fifth failure and twice as
// long after each next, up to a minute. A good sign-in clears both counts. The counts live in
// the store, so every server on one database counts the same failures; the web sign-in and
// the gateway's share them.
namespace SignInThrottle {

inline constexpr int kFreeFailures = 5;
inline constexpr qint64 kLongestWaitMs = 60'000;

// How long the attempt still has to wait, in milliseconds; 0 when it may go ahead.
qint64 WaitMs(Database& db, const QString& userName, const QString& peer);
void Failed(Database& db, const QString& userName, const QString& peer);
void Succeeded(Database& db, const QString& userName, const QString& peer);

} // namespace SignInThrottle
