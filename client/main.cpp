#include "shell/WebEngineSetup.h"
#include "shell/modTLMain.h"
#include <QApplication>

int main(int argc, char* argv[]) {
    PrepareWebEngine();
    QApplication app(argc, argv);
    if (!modTLMain::Main())
        return 0;
    return app.exec();
}
