#pragma once

#include "platform/NetworkInterfaces.h"

// Network states a test can put the program in, whatever this machine's interfaces are.
namespace FakeNetwork {

inline QList<InterfaceState> OnlyLoopback() {
    InterfaceState lo;
    lo.name = QStringLiteral("lo");
    lo.up = lo.running = lo.loopback = true;
    lo.addresses = {QHostAddress::LocalHost};
    return {lo};
}

inline QList<InterfaceState> Wired() {
    InterfaceState eth;
    eth.name = QStringLiteral("eth0");
    eth.up = eth.running = true;
    eth.addresses = {QHostAddress(QStringLiteral("192.0.2.10"))};
    return OnlyLoopback() << eth;
}

} // namespace FakeNetwork
