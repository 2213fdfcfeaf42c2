#pragma once

#include <QString>

// The local machine as the network sees it.
namespace HostInfo {

QString LocalHostName();

// The first IPv4 address of an interface that is up and isn't the loopback; "127.0.0.1" when
// the machine has none.
QString LocalIP();

} // namespace HostInfo
