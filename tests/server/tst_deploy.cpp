#include "PgInstance.h"
#include "ServerClient.h"
#include "TavloServerProcess.h"
#include "store/Database.h"

#include <QtTest>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int freePort() {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof at;
    ::bind(fd, reinterpret_cast<sockaddr*>(&at), sizeof at);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&at), &length);
    ::close(fd);
    return ntohs(at.sin_port);
}

QString run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(20000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

QString portOf(const TavloServerProcess& server) {
    return server.baseUrl().section(QLatin1Char(':'), -1);
}

} // namespace

// The shipped proxy configuration in front of two servers on one private PostgreSQL: TLS ends
// at the proxy, either server answers, and a write through one is read through the other.
class TestDeploy : public QObject {
    Q_OBJECT
    QTemporaryDir dir;
    std::unique_ptr<PgInstance> pg;
    std::unique_ptr<TavloServerProcess> first, second;
    QProcess nginx;
    int httpsPort = 0, httpPort = 0;

    QString curl(const QStringList& arguments) {
        return run(
            QStringLiteral("curl"),
            QStringList{QStringLiteral("-sk"), QStringLiteral("--max-time"), QStringLiteral("10")} +
                arguments);
    }
    QString https(const QString& path) {
        return QStringLiteral("https://127.0.0.1:%1%2").arg(httpsPort).arg(path);
    }

    // The shipped site file with this test's ports, certificate and folder.
    void writeConfiguration() {
        QFile shipped(qEnvironmentVariable("TAVLO_SOURCE_DIR") + "/deploy/nginx/tavlo.conf");
        QVERIFY(shipped.open(QIODevice::ReadOnly));
        QString site = QString::fromUtf8(shipped.readAll());
        const QString folder = dir.path();
        site.replace("127.0.0.1:8081", "127.0.0.1:" + portOf(*first))
            .replace("127.0.0.1:8082", "127.0.0.1:" + portOf(*second))
            .replace("listen 443 ssl;", QStringLiteral("listen 127.0.0.1:%1 ssl;").arg(httpsPort))
            .replace("listen 80;", QStringLiteral("listen 127.0.0.1:%1;").arg(httpPort))
            .replace("/etc/tavlo/tls/fullchain.pem", folder + "/cert.pem")
            .replace("/etc/tavlo/tls/privkey.pem", folder + "/key.pem");
        QFile siteFile(folder + "/site.conf");
        QVERIFY(siteFile.open(QIODevice::WriteOnly));
        siteFile.write(site.toUtf8());
        QFile main(folder + "/nginx.conf");
        QVERIFY(main.open(QIODevice::WriteOnly));
        main.write(
            QStringLiteral("daemon off;\nuser root;\nworker_processes 1;\npid %1/nginx.pid;\n"
                           "error_log %1/error.log;\nevents {}\nhttp {\n access_log off;\n"
                           " client_body_temp_path %1/body;\n proxy_temp_path %1/proxy;\n"
                           " fastcgi_temp_path %1/fcgi;\n uwsgi_temp_path %1/uwsgi;\n"
                           " scgi_temp_path %1/scgi;\n include %1/site.conf;\n}\n")
                .arg(folder)
                .toUtf8());
    }

private slots:
    void initTestCase() {
        const bool ci = qgetenv("CI") == "true";
        if (!QFile::exists(QStringLiteral("/usr/sbin/nginx"))) {
            if (ci)
                QFAIL("nginx is not installed");
            QSKIP("nginx is not installed");
        }
        pg = std::make_unique<PgInstance>();
        if (!pg->available()) {
            if (ci)
                QFAIL(qPrintable(pg->reason()));
            QSKIP(qPrintable(pg->reason()));
        }
        const QStringList options{QStringLiteral("--trusted-proxy"), QStringLiteral("127.0.0.1")};
        first = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Demo, options,
                                                     pg->url());
        second = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Empty, options,
                                                      pg->url());
        QVERIFY2(first->started() && second->started(),
                 qPrintable(first->failure() + second->failure()));
        run(QStringLiteral("openssl"), {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days",
                                        "1", "-subj", "/CN=localhost", "-keyout",
                                        dir.filePath("key.pem"), "-out", dir.filePath("cert.pem")});
        httpsPort = freePort();
        httpPort = freePort();
        writeConfiguration();
        nginx.setProcessChannelMode(QProcess::MergedChannels);
        nginx.start(
            QStringLiteral("/usr/sbin/nginx"),
            {"-p", dir.path(), "-c", dir.filePath("nginx.conf"), "-e", dir.filePath("error.log")});
        QTRY_VERIFY_WITH_TIMEOUT(curl({https("/healthz")}) == QStringLiteral("ok\n"), 10000);
    }
    void cleanupTestCase() {
        if (nginx.state() != QProcess::NotRunning) {
            nginx.terminate();
            nginx.waitForFinished(5000);
        }
        first.reset();
        second.reset();
        pg.reset();
    }

    // Over TLS at the proxy: a sign-in, its session and a poll; plain HTTP is sent to HTTPS.
    void throughTheProxy() {
        const QString jar = dir.filePath("cookies");
        auto post = [&](const QString& sql) {
            return curl(
                {"-c", jar, "-b", jar, "--data-urlencode", "strSQL=" + sql, https("/XMLDemo.asp")});
        };
        QVERIFY(post("EXEC LoginCheck 'ann','demo'").contains("z:row"));
        QVERIFY(post("EXEC tl_GetContactStatus 1001").contains("StatusSys"));
        QCOMPARE(curl({"-o", "/dev/null", "-w", "%{http_code}",
                       QStringLiteral("http://127.0.0.1:%1/healthz").arg(httpPort)}),
                 QStringLiteral("301"));
    }

    // One server's write reaches the other's cached board within a second (answers are kept
    // 10 s otherwise), and a heartbeat heard by one shows on the other's board.
    void aWriteOnOneIsReadOnTheOther() {
        ServerClient annHere(first->baseUrl(), QStringLiteral("ann"));
        ServerClient annThere(second->baseUrl(), QStringLiteral("ann"));
        auto bobThere = [&](const char* column) {
            auto rs =
                annThere.read(QStringLiteral("EXEC tl_GetUserStatuses NULL,1002,1,5001,NULL"));
            return rs ? rs->Fields(QLatin1String(column)).Value() : QVariant();
        };
        QVERIFY(bobThere("comment") != QVariant(QStringLiteral("At the dentist")));
        QVERIFY(annHere.write(
            QStringLiteral("EXEC tl_SetStatus 1002,8,NULL,NULL,'At the dentist',5001")));
        QElapsedTimer took;
        took.start();
        QTRY_COMPARE_WITH_TIMEOUT(bobThere("comment"), QVariant(QStringLiteral("At the dentist")),
                                  1000);
        qInfo("seen on the other server after %lld ms", took.elapsed());
        ServerClient bobHere(first->baseUrl(), QStringLiteral("bob"));
        QVERIFY(bobHere.write(QStringLiteral("EXEC tl_UpdateChatStatus 1002, 1")));
        QTRY_COMPARE_WITH_TIMEOUT(bobThere("ChatStatus").toInt(), 1, 5000);
    }

    // A sign-out on one server ends the session on the other at once (each keeps signed-in
    // callers for ten seconds otherwise).
    void aSignOutHoldsEverywhere() {
        const QString jar = dir.filePath("carol"); // cookies of 127.0.0.1 go to either port
        auto post = [&](const TavloServerProcess& server, const QString& sql) {
            return curl({"-c", jar, "-b", jar, "--data-urlencode", "strSQL=" + sql,
                         server.baseUrl() + "/XMLDemo.asp"});
        };
        const QString poll = QStringLiteral("EXEC tl_GetContactStatus 1003");
        QVERIFY(post(*first, "EXEC LoginCheck 'carol','demo'").contains("z:row"));
        QVERIFY(post(*second, poll).contains("z:row"));
        curl({"-b", jar, first->baseUrl() + "/logout.asp"}); // the jar keeps the old cookie
        QTRY_VERIFY_WITH_TIMEOUT(!post(*second, poll).contains("z:row"), 1000);
    }

    // A recovery question answered by one server, its mail taken by the other: the mail
    // still carries the reset link.
    void recoveryAcrossServers() {
        ServerClient asking(first->baseUrl()), mailing(second->baseUrl());
        QVERIFY(asking.read(QStringLiteral("tl_ForgotPassword 'erin@demo.example','Price'")));
        QVERIFY(mailing.write(QStringLiteral(
            "EXEC tl_SendEmail 'erin@demo.example','Tavlo Lost Password Request','Below is your "
            "Tavlo UserName and Password:','info@demo.example','info@demo.example',''")));
        Database db(pg->url());
        QSqlQuery mail =
            db.exec(QStringLiteral("SELECT body FROM outbox WHERE mailto = 'erin@demo.example'"));
        QVERIFY(mail.next());
        QVERIFY(mail.value(0).toString().contains(QStringLiteral("/reset?token=")));
    }

    // Failed sign-ins count the same on every server: five on one, and the other makes the
    // next attempt wait.
    void guessesCountEverywhere() {
        ServerClient here(first->baseUrl()), there(second->baseUrl());
        for (int i = 0; i < 5; ++i)
            QVERIFY(here.read(QStringLiteral("EXEC LoginCheck 'grace','wrong'")));
        QVERIFY(there.refused(QStringLiteral("EXEC LoginCheck 'grace','demo'"), 429));
    }

    // With one server gone, the proxy's answers come from the other.
    void oneServerDown() {
        second.reset();
        for (int i = 0; i < 6; ++i)
            QCOMPARE(curl({https("/healthz")}), QStringLiteral("ok\n"));
    }
};

QTEST_GUILESS_MAIN(TestDeploy)
#include "tst_deploy.moc"
