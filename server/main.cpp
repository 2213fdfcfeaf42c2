// tavlo-server: the server behind the client's gateway, and the commands that set up and keep
// its store (see setup/Commands.h and README.md).
#include "setup/Commands.h"
#include <QGuiApplication>

int main(int argc, char* argv[]) {
    // Pictures are drawn with QtGui; no window is ever opened.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavlo-server"));
    return RunCommandLine(app);
}
