#pragma once

#include "ActivitySource.h"
#include <QElapsedTimer>
#include <QPoint>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>

// Activity as a desktop's idle monitor tells it (Wayland desktops show no one the pointer or
// the keys): only how long ago the last input of any kind came. So any input counts as the
// pointer moving sideways, which also brings an idle user back; no key ever shows on its own.
class DesktopIdleActivitySource : public ActivitySource {
public:
    // Milliseconds since the last input anywhere on the desktop; nothing when it can't be read.
    using IdleReader = std::function<std::optional<std::uint64_t>()>;

    explicit DesktopIdleActivitySource(IdleReader reader);

    // A source on the session bus's idle monitor (GNOME's, then the screen saver's of KDE and
    // others), or null when none answers.
    static std::unique_ptr<DesktopIdleActivitySource> Create();
    // Which monitor answered.
    QString Monitor() const { return m_monitor; }

    // X grows by one at each look that finds input since the previous look.
    QPoint CursorPos() override;
    bool AnyKeyActive() override { return false; }

private:
    bool inputSinceLastLook();

    IdleReader m_reader;
    QString m_monitor;
    QElapsedTimer m_sinceLook;
    int m_inputs = 0;
};
