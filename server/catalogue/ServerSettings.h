#pragma once

#include <QString>

// What `serve` was told that the procedures need to know. Set once before the workers start
// and only read afterwards, so it needs no lock.
struct ServerSettings {
    // The one address besides the people's own that mail may go to; empty when none is set.
    QString helpDeskMail;
    // The envelope sender and From of every mail the server sends.
    QString mailFrom = QStringLiteral("tavlo@localhost");
    // Cookies only over HTTPS: the public address is https.
    bool secureCookies = false;
    // A client on chat says so with every poll; one silent this long has gone.
    int chatWindowSeconds = 90;
    // The public address given to serve, empty when none was: mailed links point there, and
    // without it the administration hands out first passwords instead of mailing links.
    QString publicUrl = QString();

    static const ServerSettings& Current();
    static void Set(ServerSettings settings);
};
