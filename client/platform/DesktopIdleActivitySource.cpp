#include "DesktopIdleActivitySource.h"

#if __has_include(<QDBusInterface>)
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>
#define TAVLO_HAVE_DBUS 1
#endif

namespace {

constexpr int kCallTimeoutMs = 500;

struct MonitorCall {
    const char* service;
    const char* path;
    const char* interface;
    const char* method;
};

// GNOME answers in milliseconds with a 64-bit count; KDE's screen saver in milliseconds too.
constexpr MonitorCall kMonitors[] = {
    {"org.gnome.Mutter.IdleMonitor", "/org/gnome/Mutter/IdleMonitor/Core",
     "org.gnome.Mutter.IdleMonitor", "GetIdletime"},
    {"org.freedesktop.ScreenSaver", "/ScreenSaver", "org.freedesktop.ScreenSaver",
     "GetSessionIdleTime"},
};

#ifdef TAVLO_HAVE_DBUS
std::optional<std::uint64_t> askMonitor(const MonitorCall& m) {
    QDBusInterface monitor(QString::fromLatin1(m.service), QString::fromLatin1(m.path),
                           QString::fromLatin1(m.interface), QDBusConnection::sessionBus());
    if (!monitor.isValid())
        return std::nullopt;
    monitor.setTimeout(kCallTimeoutMs);
    const QDBusMessage answer = monitor.call(QString::fromLatin1(m.method));
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return std::nullopt;
    bool ok = false;
    const qulonglong idle = answer.arguments().first().toULongLong(&ok);
    return ok ? std::optional<std::uint64_t>(idle) : std::nullopt;
}
#endif

} // namespace

DesktopIdleActivitySource::DesktopIdleActivitySource(IdleReader reader)
    : m_reader(std::move(reader)) {}

std::unique_ptr<DesktopIdleActivitySource> DesktopIdleActivitySource::Create() {
#ifdef TAVLO_HAVE_DBUS
    for (const MonitorCall& m : kMonitors) {
        if (!askMonitor(m))
            continue;
        auto source = std::make_unique<DesktopIdleActivitySource>([m] { return askMonitor(m); });
        source->m_monitor = QString::fromLatin1(m.service);
        return source;
    }
#endif
    return nullptr;
}

// Input came after the previous look exactly when the desktop's quiet time is shorter than
// the time since that look. The first look only starts the clock.
bool DesktopIdleActivitySource::inputSinceLastLook() {
    const bool first = !m_sinceLook.isValid();
    const qint64 elapsed = first ? 0 : m_sinceLook.restart();
    if (first)
        m_sinceLook.start();
    const auto idle = m_reader ? m_reader() : std::nullopt;
    return !first && idle && *idle < static_cast<std::uint64_t>(elapsed);
}

QPoint DesktopIdleActivitySource::CursorPos() {
    if (inputSinceLastLook())
        ++m_inputs;
    return QPoint(m_inputs, 0);
}
