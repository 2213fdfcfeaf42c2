#pragma once

#include <QString>

// The chat server setting: a host name, optionally followed by ":port". The host alone is the
// domain of every JID; the port defaults to the standard client port.
struct ChatServerAddress {
    static constexpr int kDefaultPort = 5222;

    QString host;
    int port = kDefaultPort;

    static ChatServerAddress Parse(const QString& setting);
};
