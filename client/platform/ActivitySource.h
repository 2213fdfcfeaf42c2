#pragma once

#include <QPoint>
#include <memory>

// Where the idle watch reads the user's activity from, without having the focus: the pointer's
// position on the screen, and whether any key or mouse button is in use.
class ActivitySource {
public:
    virtual ~ActivitySource() = default;

    // The pointer's position in screen coordinates.
    virtual QPoint CursorPos() = 0;
    // Any key or mouse button is down now or went down since the previous call. Each call
    // clears the record of earlier presses, as a scan of every key would.
    virtual bool AnyKeyActive() = 0;
};

// The source that fits this desktop: the X server's own input on X11, the system's key and
// cursor state on Windows, and elsewhere (Wayland) only the input to this program's windows,
// which the log then says.
std::unique_ptr<ActivitySource> MakeActivitySource();
