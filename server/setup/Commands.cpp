#include "Commands.h"
#include "OptionAdder.h"

#include "BadInput.h"
#include "DirectoryCommands.h"
#include "ServeCommand.h"
#include "StoreCommands.h"
#include "store/Database.h"
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTextStream>

namespace {

const char kUsage[] =
    "Usage: tavlo-server COMMAND [--db URL] ...\n"
    "  serve | init | demo | outbox | anomalies | history [--days N] | release ...\n"
    "  org add NAME\n"
    "  person add --org ORG --first F --last L --user U --email E [--ext X] [--group G]\n"
    "             [--location L] [--admin]\n"
    "  person import FILE.csv --org ORG\n"
    "  person disable USER | person remove USER | person rights USER [--admin] [--others-status]\n"
    "  group add NAME --org ORG | location add NAME --org ORG\n"
    "  status add TEXT --org ORG --color #RRGGBB --order N\n";

QString defaultDatabase() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(folder);
    return QStringLiteral("sqlite:") + folder + QStringLiteral("/tavlo.db");
}

void addOptions(QCommandLineParser& parser) {
    parser.setApplicationDescription(QStringLiteral("The Tavlo server."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("command"), QString::fromLatin1(kUsage));
    const OptionAdder add(parser);
    add("db", "sqlite:PATH or postgresql://user@host:port/db", "url", "");
    add("listen", "HOST:PORT to serve on (port 0: any free one)", "address", "127.0.0.1:8080");
    add("smtp", "deliver the outbox through smtp://host:port", "url", "");
    add("public-url", "address that mailed links point at", "url", "");
    add("helpdesk-mail", "the help desk's address, which mail may go to besides the people's own",
        "address", "");
    add("mail-from", "the address every mail goes out from", "address", "tavlo@localhost");
    AddServeOptions(parser);
    StoreCommands::AddOptions(parser);
    DirectoryCommands::AddOptions(parser);
}

int run(const QStringList& args, const QCommandLineParser& parser) {
    const QString dbUrl =
        parser.isSet(QStringLiteral("db")) ? parser.value(QStringLiteral("db")) : defaultDatabase();
    if (args.size() == 1 && args.first() == QStringLiteral("serve")) {
        Database db(dbUrl);
        db.createSchema();
        return Serve(parser, db);
    }
    if (args.size() == 1) {
        const int done = StoreCommands::Run(args.first(), parser, dbUrl);
        if (done >= 0)
            return done;
    }
    const int done = DirectoryCommands::Run(args, parser, dbUrl);
    if (done >= 0)
        return done;
    throw BadInput(QStringLiteral("unknown command: ") + args.join(QLatin1Char(' ')));
}

} // namespace

int RunCommandLine(const QCoreApplication& app) {
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(app.arguments())) {
        QTextStream(stderr) << "tavlo-server: " << parser.errorText() << '\n' << kUsage;
        return 2;
    }
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp(0);
    const QStringList args = parser.positionalArguments();
    if (args.isEmpty()) {
        QTextStream(stderr) << kUsage;
        return 2;
    }
    try {
        return run(args, parser);
    } catch (const BadInput& e) {
        QTextStream(stderr) << "tavlo-server " << args.first() << ": " << e.reason() << '\n';
        return 2;
    } catch (const std::exception& e) {
        QTextStream(stderr) << "tavlo-server: " << e.what() << '\n';
        return 1;
    }
}
