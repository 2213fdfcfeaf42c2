// The server under the poll: how many poll statements a second the real gateway answers next
// to a bare answer from the same HTTP front (wrk on loopback), and how long the 5,000-person
// board read takes inside the server, first and when nothing changed since the last read.
#include "catalogue/Catalogue.h"
#include "gateway/GatewayEndpoint.h"
#include "gateway/HttpFront.h"
#include "store/Database.h"
#include "store/DemoOrganisation.h"
#include "wire/GatewayPost.h"
#include "wire/RowsetWriter.h"
#include "wire/Statement.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>
#include <httplib.h>
#include <thread>
#include <vector>

namespace {

constexpr int kPeople = 5000;
constexpr qint64 kFirstExtra = 20001;

QTextStream out(stdout);

void seedPeople(Database& db) {
    DemoOrganisation::Create(db);
    db.write([&] {
        for (int i = 0; i < kPeople - 40; ++i)
            db.exec(QStringLiteral("INSERT INTO contact (contactsys, organizationsys, "
                                   "organizationlocationsys, firstname, lastname, ext, position, "
                                   "emailaddress, statussys, comment, returnat) VALUES "
                                   "(?, 1, ?, ?, ?, ?, 'Staff', ?, ?, ?, ?)"),
                    {kFirstExtra + i, 1 + i % 2, QStringLiteral("First%1").arg(i),
                     QStringLiteral("Last%1").arg(i, 5, 10, QLatin1Char('0')),
                     QString::number(3000 + i), QStringLiteral("p%1@demo.example").arg(i),
                     i % 3 == 0 ? 3 : 8,
                     i % 3 == 0 ? QVariant() : QVariant(QStringLiteral("Back after lunch")),
                     i % 3 == 0 ? QVariant() : QVariant(QStringLiteral("2026-11-20T13:30:00"))});
    });
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The Cookie header of a session of ann's (contact 1001, user 5001), who the statements act as.
QString signInAnn(GatewayEndpoint& endpoint) {
    const auto reply = endpoint.Handle(
        wire::gatewayBody(QStringLiteral("EXEC LoginCheck 'ann','demo'")), QStringLiteral("bench"));
    if (reply.setCookie.isEmpty())
        qFatal("the bench could not sign in");
    return QString::fromLatin1(reply.setCookie.left(reply.setCookie.indexOf(';')));
}

// Server time of one statement through the gateway's endpoint, in milliseconds.
double timed(GatewayEndpoint& endpoint, const QByteArray& body, const QString& cookie) {
    QElapsedTimer timer;
    timer.start();
    const auto reply = endpoint.Handle(body, QStringLiteral("bench"), cookie);
    const double ms = timer.nsecsElapsed() / 1e6;
    if (reply.status != 200 || reply.body.isEmpty())
        qFatal("the board read failed");
    return ms;
}

void boardRead(Database& db) {
    GatewayEndpoint endpoint(db);
    const QString cookie = signInAnn(endpoint);
    const QByteArray board =
        wire::gatewayBody(QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL"));
    std::vector<double> cold, warm;
    for (int i = 0; i < 15; ++i) {
        // A status change, so the next read is fresh.
        const QByteArray change = wire::gatewayBody(
            QStringLiteral("EXEC tl_SetStatus 1001,%1,NULL,NULL,'bench',5001").arg(i % 2 ? 3 : 8));
        endpoint.Handle(change, QStringLiteral("bench"), cookie);
        cold.push_back(timed(endpoint, board, cookie));
        warm.push_back(timed(endpoint, board, cookie));
    }
    // Where the time of a fresh read goes.
    const auto statement = wire::StatementParser::parse(
        QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL"));
    std::vector<double> running, writing;
    Caller ann;
    ann.userSys = 5001;
    ann.contactSys = 1001;
    ann.organizationSys = 1;
    for (int i = 0; i < 9; ++i) {
        QElapsedTimer timer;
        timer.start();
        const Answer answer = Catalogue::instance().run(db, *statement, ann);
        running.push_back(timer.nsecsElapsed() / 1e6);
        timer.restart();
        const QByteArray bytes = wire::RowsetWriter::write(*answer);
        writing.push_back(timer.nsecsElapsed() / 1e6);
    }
    out << "  of which the query and rows: " << median(running)
        << " ms, writing the rowset: " << median(writing) << " ms\n";
    out << "board read, 5000 people, after a change: " << median(cold) << " ms (goal <= 30)\n";
    out << "board read, 5000 people, unchanged:      " << median(warm) << " ms (goal <= 10)\n";
}

double wrkRate(const QString& url, const QString& script, int seconds) {
    QProcess wrk;
    QStringList args{QStringLiteral("-t2"), QStringLiteral("-c32"),
                     QStringLiteral("-d%1s").arg(seconds)};
    if (!script.isEmpty())
        args << QStringLiteral("-s") << script;
    wrk.start(QStringLiteral("wrk"), args << url);
    wrk.waitForFinished(-1);
    const QString text = QString::fromLocal8Bit(wrk.readAllStandardOutput());
    const auto match = QRegularExpression(QStringLiteral("Requests/sec:\\s+([0-9.]+)")).match(text);
    if (!match.hasMatch() || text.contains(QStringLiteral("Non-2xx")))
        qFatal("wrk gave no clean rate: %s",
               qPrintable(text + QString::fromLocal8Bit(wrk.readAllStandardError())));
    return match.captured(1).toDouble();
}

// The poll of one signed-in person (ann): random colleagues' status, her unread notes, her
// chat state.
QString writePollScript(const QString& folder, const QString& cookie) {
    const QString path = folder + QStringLiteral("/poll.lua");
    QString lua = QStringLiteral(R"(
math.randomseed(7)
local forms = {"EXEC%20tl%5FGetContactStatus%20", "EXEC%20tl%5FGetContactNotesUnread%20%20",
               "EXEC%20tl%5FUpdateChatStatus%20"}
wrk.method = "POST"
wrk.headers["Content-Type"] = "application/x-www-form-urlencoded"
wrk.headers["lastCached"] = "11/18/2026 9:05:07 AM"
wrk.headers["Cookie"] = "COOKIE"
local n = 0
request = function()
  n = n + 1
  local kind = (n % 3) + 1
  local who = 1001
  if kind == 1 then who = FIRST + math.random(0, SPAN) end
  local body = "strSQL=" .. forms[kind] .. who
  if kind == 3 then body = body .. "%2C%201" end
  return wrk.format(nil, "/XMLDemo.asp", nil, body)
end
)");
    lua.replace(QStringLiteral("FIRST"), QString::number(kFirstExtra));
    lua.replace(QStringLiteral("COOKIE"), cookie);
    lua.replace(QStringLiteral("SPAN"), QString::number(kPeople - 41));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(lua.toUtf8());
    return path;
}

void pollMix(const QString& dbUrl, const QString& folder) {
    QProcess server;
    server.start(QCoreApplication::applicationDirPath() + QStringLiteral("/../server/tavlo-server"),
                 {QStringLiteral("serve"), QStringLiteral("--listen"),
                  QStringLiteral("127.0.0.1:0"), QStringLiteral("--db"), dbUrl});
    server.waitForReadyRead(10000);
    const auto port = QRegularExpression(QStringLiteral(":(\\d+)"))
                          .match(QString::fromLocal8Bit(server.readAllStandardOutput()));
    if (!port.hasMatch())
        qFatal("tavlo-server didn't start");

    // The same HTTP front as the server's, answering without doing anything.
    HttpFront bare([](const HttpRequest&) { return HttpReply{200, "text/plain", "ok", {}}; });
    if (!bare.Bind("127.0.0.1", 0, nullptr))
        qFatal("the bare server didn't start");
    const int barePort = bare.Port();
    std::thread bareThread([&] { bare.Run(); });

    httplib::Client signIn("127.0.0.1", port.captured(1).toInt());
    const auto answer =
        signIn.Post("/XMLDemo.asp",
                    wire::gatewayBody(QStringLiteral("EXEC LoginCheck 'ann','demo'")).toStdString(),
                    "application/x-www-form-urlencoded");
    if (!answer || !answer->has_header("Set-Cookie"))
        qFatal("the bench could not sign in");
    const std::string setCookie = answer->get_header_value("Set-Cookie");
    const QString script =
        writePollScript(folder, QString::fromStdString(setCookie.substr(0, setCookie.find(';'))));
    const double gateway = wrkRate(
        QStringLiteral("http://127.0.0.1:%1/XMLDemo.asp").arg(port.captured(1)), script, 10);
    const double plain =
        wrkRate(QStringLiteral("http://127.0.0.1:%1/XMLDemo.asp").arg(barePort), script, 10);
    bare.Stop();
    bareThread.join();
    server.terminate();
    server.waitForFinished(5000);
    out << "poll mix through the gateway: " << gateway << " req/s\n";
    out << "bare answer, same HTTP front:  " << plain << " req/s\n";
    out << "ratio: " << gateway / plain << " (goal >= 0.40)\n";
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTemporaryDir folder;
    // TAVLO_BENCH_DB keeps the seeded database where it says, to look into afterwards.
    const QString dbPath = qEnvironmentVariableIsEmpty("TAVLO_BENCH_DB")
                               ? folder.filePath(QStringLiteral("bench.db"))
                               : qEnvironmentVariable("TAVLO_BENCH_DB");
    const QString dbUrl = QStringLiteral("sqlite:") + dbPath;
    {
        Database db(dbUrl);
        seedPeople(db);
        boardRead(db);
    }
    if (qEnvironmentVariableIsEmpty("TAVLO_BENCH_BOARD_ONLY"))
        pollMix(dbUrl, folder.path());
    out.flush();
    return 0;
}
