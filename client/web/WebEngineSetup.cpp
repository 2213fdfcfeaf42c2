#include "web/WebEngineSetup.h"

#include <QCoreApplication>
#include <QtGlobal>
#if !defined(Q_OS_WIN)
#include <unistd.h>
#endif

void PrepareWebEngine() {
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
#if !defined(Q_OS_WIN)
    if (geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
#endif
    if (!qEnvironmentVariableIsSet("QTWEBENGINE_CHROMIUM_FLAGS"))
        qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu");
}
