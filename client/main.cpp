#include "shell/modTLMain.h"
#include <QApplication>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    if (!modTLMain::Main())
        return 0;
    return app.exec();
}
