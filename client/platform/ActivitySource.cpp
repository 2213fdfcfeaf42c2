#include "ActivitySource.h"

#include "DesktopIdleActivitySource.h"
#include "OwnWindowsActivitySource.h"
#include <QGuiApplication>
#include <QtGlobal>
#if defined(Q_OS_WIN)
#include "win/WinActivitySource.h"
#elif defined(TAVLO_HAVE_X11)
#include "linux/X11ActivitySource.h"
#endif

#if !defined(Q_OS_WIN)
namespace {

// A Wayland session shows X clients only their own input, so even the X11 source would be
// half blind there: the desktop's idle monitor sees everything.
bool waylandSession() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland")) ||
           qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland");
}

std::unique_ptr<ActivitySource> desktopIdle() {
    auto source = DesktopIdleActivitySource::Create();
    if (source)
        qInfo("Activity: the desktop tells only that some input came (%s), not which, so any "
              "input counts as the mouse moving",
              qPrintable(source->Monitor()));
    return source;
}

} // namespace
#endif

std::unique_ptr<ActivitySource> MakeActivitySource() {
#if defined(Q_OS_WIN)
    return std::make_unique<WinActivitySource>();
#else
    if (waylandSession())
        if (auto source = desktopIdle())
            return source;
#if defined(TAVLO_HAVE_X11)
    if (auto x11 = X11ActivitySource::Create())
        return x11;
#endif
    if (auto source = desktopIdle())
        return source;
    qInfo("Activity: the %s desktop shows this program no input but its own, so only input "
          "to Tavlo's windows can be seen; input elsewhere doesn't keep the user from going idle",
          qPrintable(QGuiApplication::platformName()));
    return std::make_unique<OwnWindowsActivitySource>();
#endif
}
