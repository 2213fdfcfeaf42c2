#pragma once

#include <QString>

class Database;

// The one check of a user name and password, for the gateway's sign-in and the web's alike:
// throttled per account and address, and as slow for an unknown name as for a wrong password.
struct PasswordCheck {
    enum class Outcome { Good, Bad, Wait };
    Outcome outcome = Outcome::Bad;
    qint64 userSys = -1; // when Good
    qint64 waitMs = 0;   // when Wait

    static PasswordCheck Run(Database& db, const QString& userName, const QString& password,
                             const QString& peer);
    // The refusal text for an attempt that has to wait.
    QString waitText() const;
};
