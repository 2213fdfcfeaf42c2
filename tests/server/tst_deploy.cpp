#include "PgInstance.h"
#include "ServerClient.h"
#include "TavloServerProcess.h"
#include "store/Database.h"

#include <QtTest>

namespace {

QString curl(const QStringList& arguments) {
    QProcess process;
    process.start("curl", QStringList{"-sk", "--max-time", "10"} + arguments);
    process.waitForFinished(20000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

} // namespace

// The shipped proxy configuration in front of two servers on one private PostgreSQL: TLS ends at
// the proxy, either server answers, and what one server learns the other knows at once.
class TestDeploy : public QObject {
    Q_OBJECT
    QTemporaryDir dir;
    std::unique_ptr<PgInstance> pg;
    std::unique_ptr<TavloServerProcess> first, second;
    QProcess nginx;
    int httpsPort = FreeLoopbackPort(), httpPort = FreeLoopbackPort();

    QString https(const QString& path) {
        return QStringLiteral("https://127.0.0.1:%1%2").arg(httpsPort).arg(path);
    }

    // A statement posted by curl with one cookie jar (cookies of 127.0.0.1 go to any port).
    QString post(const QString& baseUrl, const QString& sql) {
        const QString jar = dir.filePath("cookies");
        return curl(
            {"-c", jar, "-b", jar, "--data-urlencode", "strSQL=" + sql, baseUrl + "/XMLDemo.asp"});
    }

    // The shipped site file with this test's ports, certificate and folder.
    void writeConfiguration() {
        QFile shipped(qEnvironmentVariable("TAVLO_SOURCE_DIR") + "/deploy/nginx/tavlo.conf");
        QVERIFY(shipped.open(QIODevice::ReadOnly));
        const QString folder = dir.path();
        QString site = QString::fromUtf8(shipped.readAll());
        site.replace("127.0.0.1:8081", "127.0.0.1:" + QString::number(first->port()))
            .replace("127.0.0.1:8082", "127.0.0.1:" + QString::number(second->port()))
            .replace("listen 443 ssl;", QStringLiteral("listen 127.0.0.1:%1 ssl;").arg(httpsPort))
            .replace("listen 80;", QStringLiteral("listen 127.0.0.1:%1;").arg(httpPort))
            .replace("/etc/tavlo/tls/fullchain.pem", folder + "/cert.pem")
            .replace("/etc/tavlo/tls/privkey.pem", folder + "/key.pem");
        QFile main(folder + "/nginx.conf");
        QVERIFY(main.open(QIODevice::WriteOnly));
        main.write(
            QStringLiteral("daemon off;\nuser root;\nworker_processes 1;\npid %1/nginx.pid;\n"
                           "error_log %1/error.log;\nevents {}\nhttp {\n access_log off;\n"
                           " client_body_temp_path %1/body;\n proxy_temp_path %1/proxy;\n"
                           " fastcgi_temp_path %1/fcgi;\n uwsgi_temp_path %1/uwsgi;\n"
                           " scgi_temp_path %1/scgi;\n%2\n}\n")
                .arg(folder, site)
                .toUtf8());
    }

private slots:
    void initTestCase() {
        QString missing = QFile::exists("/usr/sbin/nginx") ? "" : "nginx is not installed";
        if (missing.isEmpty()) {
            pg = std::make_unique<PgInstance>();
            missing = pg->reason();
        }
        if (!missing.isEmpty() && qgetenv("CI") == "true")
            QFAIL(qPrintable(missing));
        if (!missing.isEmpty())
            QSKIP(qPrintable(missing));
        const QStringList options{"--trusted-proxy", "127.0.0.1"};
        first = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Demo, options,
                                                     pg->url());
        second = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Empty, options,
                                                      pg->url());
        QVERIFY2(first->started() && second->started(),
                 qPrintable(first->failure() + second->failure()));
        QProcess::execute("openssl", {"req", "-x509", "-newkey", "ec", "-pkeyopt",
                                      "ec_paramgen_curve:prime256v1", "-nodes", "-days", "1",
                                      "-subj", "/CN=localhost", "-keyout", dir.filePath("key.pem"),
                                      "-out", dir.filePath("cert.pem")}); // silent, unlike RSA
        writeConfiguration();
        nginx.setProcessChannelMode(QProcess::MergedChannels);
        nginx.start("/usr/sbin/nginx", {"-p", dir.path(), "-c", dir.filePath("nginx.conf"), "-e",
                                        dir.filePath("error.log")});
        QTRY_VERIFY_WITH_TIMEOUT(curl({https("/healthz")}) == QStringLiteral("ok\n"), 10000);
    }
    void cleanupTestCase() { // the servers stop with their objects, before the database
        nginx.terminate();
        nginx.waitForFinished(5000);
    }

    // Over TLS at the proxy: a sign-in, its session and a poll; plain HTTP is sent to HTTPS.
    void throughTheProxy() {
        QVERIFY(post(https(""), "EXEC LoginCheck 'ann','demo'").contains("z:row"));
        QVERIFY(post(https(""), "EXEC tl_GetContactStatus 1001").contains("StatusSys"));
        QCOMPARE(curl({"-o", "/dev/null", "-w", "%{http_code}",
                       QStringLiteral("http://127.0.0.1:%1/healthz").arg(httpPort)}),
                 QStringLiteral("301"));
    }

    // One server's write reaches the other's cached board within a second (answers are kept 10 s
    // otherwise), and a heartbeat heard by one shows on the other's board.
    void aWriteOnOneIsReadOnTheOther() {
        ServerClient annHere(first->baseUrl(), "ann"), annThere(second->baseUrl(), "ann");
        auto bobThere = [&](const char* column) {
            auto rs = annThere.read("EXEC tl_GetUserStatuses NULL,1002,1,5001,NULL");
            return rs ? rs->Fields(column).Value().toString() : QString();
        };
        QVERIFY(bobThere("comment") != "At the dentist");
        QVERIFY(annHere.write("EXEC tl_SetStatus 1002,8,NULL,NULL,'At the dentist',5001"));
        QElapsedTimer took;
        took.start();
        QTRY_COMPARE_WITH_TIMEOUT(bobThere("comment"), "At the dentist", 1000);
        qInfo("seen on the other server after %lld ms", took.elapsed());
        QVERIFY(ServerClient(first->baseUrl(), "bob").write("EXEC tl_UpdateChatStatus 1002, 1"));
        QTRY_COMPARE_WITH_TIMEOUT(bobThere("ChatStatus"), "1", 5000);
    }

    // Sign-in state is the same on every server: a sign-out on one ends the session on the other at
    // once (each keeps signed-in callers for ten seconds otherwise), five failed sign-ins on one
    // make the other's next attempt wait, and a recovery question answered by one gives the reset
    // link to the mail the other takes.
    void signInStateIsShared() {
        const QString poll = QStringLiteral("EXEC tl_GetContactStatus 1003");
        QVERIFY(post(first->baseUrl(), "EXEC LoginCheck 'carol','demo'").contains("z:row"));
        QVERIFY(post(second->baseUrl(), poll).contains("z:row"));
        curl({"-b", dir.filePath("cookies"), first->baseUrl() + "/logout.asp"}); // jar unchanged
        QTRY_VERIFY_WITH_TIMEOUT(!post(second->baseUrl(), poll).contains("z:row"), 1000);

        ServerClient here(first->baseUrl()), there(second->baseUrl());
        for (int i = 0; i < 5; ++i)
            QVERIFY(here.read("EXEC LoginCheck 'grace','wrong'"));
        QVERIFY(there.refused("EXEC LoginCheck 'grace','demo'", 429));

        QVERIFY(here.read("tl_ForgotPassword 'erin@demo.example','Price'"));
        QVERIFY(there.write(
            "EXEC tl_SendEmail 'erin@demo.example','Tavlo Lost Password Request','Below is your "
            "Tavlo UserName and Password:','info@demo.example','info@demo.example',''"));
        Database db(pg->url());
        QSqlQuery mail = db.exec("SELECT body FROM outbox WHERE mailto = 'erin@demo.example'");
        QVERIFY(mail.next());
        QVERIFY(mail.value(0).toString().contains("/reset?token="));
    }

    // With one server gone, the proxy's answers come from the other.
    void oneServerDown() {
        second.reset();
        for (int i = 0; i < 6; ++i)
            QCOMPARE(curl({https("/healthz")}), "ok\n");
    }
};

QTEST_GUILESS_MAIN(TestDeploy)
#include "tst_deploy.moc"
