#pragma once

#include "NetworkInterfaces.h"

// Whether the machine has a network connection. Asked every second by the network watch, so it
// is cheap and never cached.
namespace NetworkState {

// Some interface is up and running, isn't the loopback, and has an address.
bool IsNetworkAlive();
bool IsNetworkAlive(const QList<InterfaceState>& interfaces);

} // namespace NetworkState
