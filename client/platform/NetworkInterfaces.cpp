#include "NetworkInterfaces.h"

#include <QNetworkInterface>

namespace {

NetworkInterfaces::Source& replacement() {
    static NetworkInterfaces::Source source;
    return source;
}

InterfaceState stateOf(const QNetworkInterface& nic) {
    InterfaceState state;
    state.name = nic.name();
    const auto flags = nic.flags();
    state.up = flags.testFlag(QNetworkInterface::IsUp);
    state.running = flags.testFlag(QNetworkInterface::IsRunning);
    state.loopback =
        flags.testFlag(QNetworkInterface::IsLoopBack) || nic.type() == QNetworkInterface::Loopback;
    for (const auto& entry : nic.addressEntries())
        state.addresses << entry.ip();
    return state;
}

QList<InterfaceState> machineInterfaces() {
    QList<InterfaceState> list;
    for (const auto& nic : QNetworkInterface::allInterfaces())
        list << stateOf(nic);
    return list;
}

} // namespace

namespace NetworkInterfaces {

QList<InterfaceState> List() {
    return replacement() ? replacement()() : machineInterfaces();
}

void SetSource(Source source) {
    replacement() = std::move(source);
}

} // namespace NetworkInterfaces
