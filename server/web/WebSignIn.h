#pragma once

#include <QString>

class Database;

// The web's check of a user name and password, shared by the sign-in page and the JSON
// sign-in: the password, then the account (not removed) and its organisation (not disabled).
struct WebSignIn {
    int status = 401; // 200 for a good sign-in; 401, 403 or 429 with the reason otherwise
    QString reason;
    qint64 userSys = -1;
    qint64 organizationSys = 0;
    QString organizationName;

    bool good() const { return status == 200; }

    static WebSignIn Check(Database& db, const QString& userName, const QString& password,
                           const QString& peer);
};
