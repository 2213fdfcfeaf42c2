// tavlo-web: the tray program's web window, in a process of its own so that the tray carries
// no browser engine. The tray starts it on demand and writes commands on its standard input
// (see WebCommand.h); it ends when its window closes or its input ends.
#include "web/CommandReader.h"
#include "web/WebCommand.h"
#include "web/WebEngineSetup.h"
#include "web/WebPageWindow.h"
#include <QApplication>

namespace {

void run(WebPageWindow& window, const QByteArray& line) {
    const WebCommand command = WebCommand::decode(line);
    if (command.kind == WebCommand::Kind::Navigate)
        window.Navigate(command.url, command.postData, command.headers);
    else if (command.kind == WebCommand::Kind::Show)
        window.show();
}

} // namespace

int main(int argc, char* argv[]) {
    PrepareWebEngine();
    QApplication app(argc, argv);
    WebPageWindow window;
    CommandReader reader;
    QObject::connect(&reader, &CommandReader::lineReceived, &window,
                     [&window](const QByteArray& line) { run(window, line); });
    QObject::connect(&reader, &CommandReader::ended, &app, &QCoreApplication::quit);
    return app.exec();
}
