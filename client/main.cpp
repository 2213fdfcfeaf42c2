#include "shell/AppVersion.h"
#include "shell/StartTrace.h"
#include "shell/modTLMain.h"
#include <QApplication>
#include <cstdio>
#include <cstring>

namespace {

// `tavlo --version` prints the running version and nothing starts: no display is needed, so
// an installed update can be checked from a shell.
bool printedVersion(int argc, char* argv[]) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--version") == 0) {
            std::printf("tavlo %s\n", qPrintable(AppVersion::Text()));
            return true;
        }
    return false;
}

} // namespace

int main(int argc, char* argv[]) {
    TraceStart("exec");
    if (printedVersion(argc, argv))
        return 0;
    QApplication app(argc, argv);
    if (!modTLMain::Main())
        return 0;
    return app.exec();
}
