#include "NetworkState.h"

#include <algorithm>

namespace {

bool usableAddress(const QHostAddress& address) {
    return !address.isNull() && !address.isLoopback();
}

bool carriesTraffic(const InterfaceState& nic) {
    return nic.up && nic.running && !nic.loopback &&
           std::any_of(nic.addresses.begin(), nic.addresses.end(), usableAddress);
}

} // namespace

namespace NetworkState {

bool IsNetworkAlive(const QList<InterfaceState>& interfaces) {
    return std::any_of(interfaces.begin(), interfaces.end(), carriesTraffic);
}

bool IsNetworkAlive() {
    return IsNetworkAlive(NetworkInterfaces::List());
}

} // namespace NetworkState
