#include "platform/TrayProtocol.h"

#if defined(Q_OS_WIN)
namespace TrayProtocol {
bool HasDoubleClick() {
    return true;
}
} // namespace TrayProtocol
#else
#include <QDBusConnection>
#include <QDBusConnectionInterface>

namespace TrayProtocol {
// Qt uses StatusNotifierItem when a watcher runs on the session bus, else XEmbed.
bool HasDoubleClick() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface())
        return true;
    return !bus.interface()->isServiceRegistered(QStringLiteral("org.kde.StatusNotifierWatcher"));
}
} // namespace TrayProtocol
#endif
