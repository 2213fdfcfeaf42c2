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

    static const ServerSettings& Current();
    static void Set(ServerSettings settings);
};
