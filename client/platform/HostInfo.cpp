#include "HostInfo.h"

#include "NetworkInterfaces.h"
#include <QHostInfo>

namespace HostInfo {

QString LocalHostName() {
    return QHostInfo::localHostName();
}

QString LocalIP() {
    for (const auto& nic : NetworkInterfaces::List()) {
        if (!nic.up || nic.loopback)
            continue;
        for (const auto& address : nic.addresses)
            if (address.protocol() == QAbstractSocket::IPv4Protocol && !address.isLoopback())
                return address.toString();
    }
    return QStringLiteral("127.0.0.1");
}

} // namespace HostInfo
