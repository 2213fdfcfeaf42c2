#include "ServeCommand.h"
#include "OptionAdder.h"

#include "catalogue/LogText.h"
#include "catalogue/Recovery.h"
#include "catalogue/ServerSettings.h"
#include "gateway/GatewayServer.h"
#include "mail/Outbox.h"
#include "store/ChangeFeed.h"
#include "store/Database.h"
#include "store/PasswordHash.h"
#include "store/Retention.h"
#include <QCommandLineParser>
#include <QRegularExpression>
#include <QTextStream>
#include <QThread>
#include <functional>
#include <malloc.h>
#include <optional>
#include <sys/resource.h>
#include <thread>

namespace {

// One plain address: no blanks, line breaks or list separators that would widen who gets mail.
bool isSingleAddress(const QString& address) {
    static const QRegularExpression single(QStringLiteral("^[^@\\s,;<>\"]+@[^@\\s,;<>\"]+$"));
    return single.match(address).hasMatch();
}

// Every client keeps a connection and every worker a database file open: take all the file
// handles the system allows this process, not the lower default.
void raiseFileLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

// The workers build board answers of a megabyte and more and free them at once. Left to itself,
// the allocator gives each thread an arena of its own and raises its threshold for mapping big
// blocks, so freed answers stay in sixteen fragmented arenas: the server grew from 30 to over
// 200 MB under a few board reads. Big blocks are mapped (and given back when freed) and the
// threads share two arenas.
void keepMemorySmall() {
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    mallopt(M_ARENA_MAX, 2);
}

// Drops what is kept no longer (old reports and mail, spent links, lapsed sessions).
void sweep(Database& db) {
    try {
        const Retention::Swept swept = Retention::Sweep(db);
        LogLine(QStringLiteral("swept %1 error reports, %2 mails, %3 reset links, %4 sessions")
                    .arg(swept.anomalies)
                    .arg(swept.mails)
                    .arg(swept.resetTokens)
                    .arg(swept.sessions));
    } catch (const std::exception& e) {
        LogLine(QStringLiteral("sweep failed: ") + QString::fromLocal8Bit(e.what()));
    }
}

struct ServeOptions {
    QString listen;
    QString smtp;
    QString publicUrl;
    ServerSettings settings;
    GatewayOptions gateway;
};

// The serve options past the settings: the answer cache, trusted proxies, connection caps.
std::optional<ServeOptions> serveOptions(const QCommandLineParser& parser) {
    ServeOptions options;
    options.listen = parser.value(QStringLiteral("listen"));
    options.smtp = parser.value(QStringLiteral("smtp"));
    options.publicUrl = parser.value(QStringLiteral("public-url"));
    options.settings = {
        parser.value(QStringLiteral("helpdesk-mail")).trimmed(),
        parser.value(QStringLiteral("mail-from")).trimmed(),
        options.publicUrl.startsWith(QStringLiteral("https:"), Qt::CaseInsensitive)};
    bool ok = true;
    auto number = [&](const char* name, int least, int most) {
        bool read = false;
        const int value = parser.value(QLatin1String(name)).toInt(&read);
        if (!read || value < least || value > most) {
            QTextStream(stderr) << "--" << name << " takes a whole number from " << least << " to "
                                << most << '\n';
            ok = false;
        }
        return value;
    };
    options.settings.publicUrl = options.publicUrl.trimmed();
    options.gateway.cacheBytes = std::size_t(number("cache-mb", 0, 65536)) << 20;
    options.gateway.limits.connectionsPerAddress =
        number("max-connections-per-address", 1, 1 << 20);
    options.gateway.limits.workers = number("workers", 1, 512);
    options.gateway.limits.queue = std::size_t(number("queue", 1, 1 << 20));
    options.settings.chatWindowSeconds = number("chat-window", 9, 3600);
    options.gateway.trustedProxies = parser.values(QStringLiteral("trusted-proxy"));
    if (!ok)
        return std::nullopt;
    return options;
}

// Runs a job of its own thread now and then (every `tenths` tenths of a second) on a database
// connection of its own, until running ends. Nothing it meets ends the server: a database
// that can't be opened (no file handles, a restart) or a failed job is tried again next time.
void repeat(const QString& url, const std::atomic<bool>& running, int tenths,
            const std::function<void(Database&)>& job) {
    std::unique_ptr<Database> own;
    while (running) {
        try {
            if (!own)
                own = std::make_unique<Database>(url);
            job(*own);
        } catch (const std::exception& e) {
            LogLine(QStringLiteral("background work failed, tried again later: ") +
                    QString::fromLocal8Bit(e.what()));
        }
        for (int i = 0; i < tenths && running; ++i)
            QThread::msleep(100);
    }
}

int serve(Database& db, const ServeOptions& options) {
    const QString& listen = options.listen;
    const QString& smtp = options.smtp;
    const QString& publicUrl = options.publicUrl;
    const ServerSettings& settings = options.settings;
    if (!settings.helpDeskMail.isEmpty() && !isSingleAddress(settings.helpDeskMail)) {
        QTextStream(stderr) << "--helpdesk-mail takes one address, as in help@example.org\n";
        return 2;
    }
    if (!isSingleAddress(settings.mailFrom)) {
        QTextStream(stderr) << "--mail-from takes one address, as in tavlo@example.org\n";
        return 2;
    }
    ServerSettings::Set(settings);
    raiseFileLimit();
    keepMemorySmall();
    // The dummy hash that unknown user names are checked against is made now, so that even
    // the first one costs what a wrong password does.
    PasswordHash::verifyNobody(QString());
    const qsizetype colon = listen.lastIndexOf(QLatin1Char(':'));
    bool portOk = false;
    const int port = colon > 0 ? listen.mid(colon + 1).toInt(&portOk) : 0;
    if (colon <= 0 || !portOk || port < 0 || port > 65535) {
        QTextStream(stderr) << "--listen takes HOST:PORT, as in 127.0.0.1:8080\n";
        return 2;
    }
    const QString host = listen.left(colon);
    // Servers sharing a PostgreSQL database tell each other of their writes.
    std::unique_ptr<ChangeFeed> feed;
    if (db.isPostgres()) {
        feed = std::make_unique<ChangeFeed>(db);
        db.onChange([feed = feed.get()] { feed->Changed(); });
        db.onSessionsEnded([feed = feed.get()] { feed->SessionsEnded(); });
    }
    GatewayServer server(db, options.gateway);
    QString error;
    if (!server.Bind(host, port, &error)) {
        QTextStream(stderr) << error << '\n';
        return 1;
    }
    Recovery::SetPublicBaseUrl(publicUrl.isEmpty()
                                   ? QStringLiteral("http://%1:%2").arg(host).arg(server.Port())
                                   : publicUrl);
    QTextStream(stdout) << "listening on " << host << ':' << server.Port() << Qt::endl;

    std::atomic<bool> running{true};
    std::thread mailer;
    if (!smtp.isEmpty())
        mailer = std::thread([&] {
            repeat(db.url(), running, 50, [&](Database& mailDb) {
                Outbox::DeliverWaiting(mailDb, smtp, settings.mailFrom);
            });
        });
    std::thread sweeper(
        [&] { repeat(db.url(), running, 24 * 36000, [](Database& sweepDb) { sweep(sweepDb); }); });
    server.Run();
    running = false;
    if (mailer.joinable())
        mailer.join();
    sweeper.join();
    db.onChange({});
    db.onSessionsEnded({});
    return 0;
}

} // namespace

int Serve(const QCommandLineParser& parser, Database& db) {
    const auto options = serveOptions(parser);
    return options ? serve(db, *options) : 2;
}

void AddServeOptions(QCommandLineParser& parser) {
    const OptionAdder add(parser);
    add("cache-mb", "serve: the answer cache's budget in MB", "mb", "64");
    add("max-connections-per-address", "serve: open connections one address may hold", "n", "4096");
    add("workers", "serve: requests answered at once", "n", "16");
    add("queue", "serve: requests that may wait for a worker (more are answered 503)", "n", "512");
    add("chat-window", "serve: seconds without a heartbeat after which a client is off chat",
        "seconds", "90");
    add("trusted-proxy", "serve: a reverse proxy's address, whose X-Real-IP names the client",
        "address", "");
}
