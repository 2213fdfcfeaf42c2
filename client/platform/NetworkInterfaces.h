#pragma once

#include <QHostAddress>
#include <QList>
#include <QString>
#include <functional>

// What the program needs to know of one network interface.
struct InterfaceState {
    QString name;
    bool up = false;
    bool running = false;
    bool loopback = false;
    QList<QHostAddress> addresses;
};

// The machine's network interfaces, read afresh at each call. Tests replace the source.
namespace NetworkInterfaces {

using Source = std::function<QList<InterfaceState>()>;

QList<InterfaceState> List();

// Replaces where the list comes from; an empty source restores the machine's own.
void SetSource(Source source);

} // namespace NetworkInterfaces
