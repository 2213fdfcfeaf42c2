#include "chat/ChatServerAddress.h"

ChatServerAddress ChatServerAddress::Parse(const QString& setting) {
    ChatServerAddress address;
    address.host = setting.trimmed();
    const qsizetype colon = address.host.lastIndexOf(QLatin1Char(':'));
    // One colon only: a bare IPv6 address has several and carries no port.
    if (colon <= 0 || address.host.indexOf(QLatin1Char(':')) != colon)
        return address;
    bool ok = false;
    const int port = address.host.mid(colon + 1).toInt(&ok);
    if (ok && port > 0 && port < 65536) {
        address.port = port;
        address.host.truncate(colon);
    }
    return address;
}
