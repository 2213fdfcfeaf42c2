#include "ActivitySource.h"

#include "OwnWindowsActivitySource.h"
#include <QGuiApplication>
#include <QtGlobal>
#if defined(Q_OS_WIN)
#include "win/WinActivitySource.h"
#elif defined(TAVLO_HAVE_X11)
#include "linux/X11ActivitySource.h"
#endif

std::unique_ptr<ActivitySource> MakeActivitySource() {
#if defined(Q_OS_WIN)
    return std::make_unique<WinActivitySource>();
#else
#if defined(TAVLO_HAVE_X11)
    if (auto x11 = X11ActivitySource::Create())
        return x11;
#endif
    qInfo("Activity: the %s desktop shows this program no input but its own, so only any input "
          "to Tavlo's windows can be seen; input elsewhere doesn't keep the user from going idle",
          qPrintable(QGuiApplication::platformName()));
    return std::make_unique<OwnWindowsActivitySource>();
#endif
}
