#include "StoreCommands.h"
#include "OptionAdder.h"

#include "BadInput.h"
#include "InputRules.h"
#include "StatusHistory.h"
#include "mail/Outbox.h"
#include "store/Database.h"
#include "store/DemoOrganisation.h"
#include "store/Release.h"
#include <QCommandLineParser>
#include <QSqlQuery>
#include <QTextStream>
#include <optional>

namespace StoreCommands {
namespace {

void print(const QStringList& lines) {
    QTextStream out(stdout);
    for (const QString& line : lines)
        out << line << '\n';
}

int listAnomalies(Database& db) {
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT anomalysys, loggedat, errornumber, procedurename, "
                               "program, contactsys, computername, errortext FROM anomaly "
                               "ORDER BY anomalysys"));
    QTextStream out(stdout);
    while (q.next()) {
        QStringList fields;
        for (int i = 0; i < 8; ++i)
            fields << q.value(i).toString();
        out << fields.join(QLatin1Char('\t')) << '\n';
    }
    return 0;
}

std::optional<QString> valueIfSet(const QCommandLineParser& parser, const QString& name) {
    return parser.isSet(name) ? std::optional(parser.value(name)) : std::nullopt;
}

// Names a new client release for tl_VersionCheck; bad input is refused (2) before the
// database is opened, so nothing is written.
int release(const QCommandLineParser& parser, const QString& dbUrl) {
    const auto value = [&](const char* name) { return parser.value(QLatin1String(name)); };
    const auto parsed = Releases::parse(
        {value("version"), value("ftp-site").trimmed(), value("ftp-dir").trimmed(),
         value("file").trimmed(), valueIfSet(parser, QStringLiteral("ftp-user")),
         valueIfSet(parser, QStringLiteral("ftp-password")), value("sha256").trimmed()});
    if (!parsed.release) {
        QTextStream(stderr) << "tavlo-server release: " << parsed.error << '\n';
        return 2;
    }
    Database db(dbUrl);
    db.createSchema();
    Releases::add(db, *parsed.release);
    for (const QString& line : Releases::describe(*parsed.release))
        QTextStream(stdout) << line << '\n';
    return 0;
}

// The status changes of the last --days days (7 unless given), the oldest first.
int history(const QCommandLineParser& parser, const QString& dbUrl) {
    const int days =
        InputRules::number(parser.value(QStringLiteral("days")), QStringLiteral("--days"), 1, 400);
    Database db(dbUrl);
    db.createSchema();
    QTextStream out(stdout);
    for (const HistoryEntry& entry : StatusHistory::read(db, days))
        out << StatusHistory::line(entry) << '\n';
    return 0;
}

} // namespace

int Run(const QString& command, const QCommandLineParser& parser, const QString& dbUrl) {
    if (command == QStringLiteral("release"))
        return release(parser, dbUrl);
    if (command == QStringLiteral("history"))
        return history(parser, dbUrl);
    if (command != QStringLiteral("init") && command != QStringLiteral("demo") &&
        command != QStringLiteral("outbox") && command != QStringLiteral("anomalies"))
        return -1;
    Database db(dbUrl);
    if (command == QStringLiteral("demo")) {
        print(DemoOrganisation::Create(db));
        return 0;
    }
    db.createSchema();
    if (command == QStringLiteral("outbox"))
        print(Outbox::List(db));
    else if (command == QStringLiteral("anomalies"))
        return listAnomalies(db);
    return 0;
}

void AddOptions(QCommandLineParser& parser) {
    const OptionAdder add(parser);
    add("version", "release: the client version, MAJOR.MINOR.REVISION", "x.y.z");
    add("ftp-site", "release: the FTP server, HOST or HOST:PORT", "host");
    add("ftp-dir", "release: the folder on the FTP server", "dir");
    add("file", "release: the update file's name in that folder", "name");
    add("ftp-user", "release: FTP user (anonymous when left out)", "user");
    add("ftp-password", "release: FTP password, with --ftp-user", "password");
    add("sha256", "release: the update file's SHA-256, 64 hex digits", "hex");
    parser.addOption({QStringLiteral("days"), QStringLiteral("history: how many days back"),
                      QStringLiteral("n"), QStringLiteral("7")});
}

} // namespace StoreCommands
