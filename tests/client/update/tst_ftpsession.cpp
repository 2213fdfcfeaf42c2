#include "FtpServer.h"
#include "Rows.h"
#include "update/FtpSession.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <functional>

namespace {

constexpr int kWait = 10000;
constexpr qint64 kSize = 3 * 1024 * 1024 + 17; // not a multiple of any buffer
const QString kUser = QStringLiteral("ann");
const QString kPassword = QStringLiteral("secret");
const QString kFile = QStringLiteral("Tavlo 1.upd");

int count(const QStringList& events, const QString& pattern) {
    return int(events.filter(QRegularExpression(pattern)).size());
}

// A session and everything it raised, in order, as "Kind" or "Kind:value[:value]".
struct Probe {
    std::unique_ptr<FtpSession> owned = std::make_unique<FtpSession>();
    FtpSession& s = *owned;
    QStringList all;     // since the last action started
    QStringList history; // since the session was made
    std::function<void(const QString& kind)> onEvent;

    Probe(const QString& host, const QString& user = kUser, const QString& password = kPassword) {
        s.Host = host;
        s.User = user;
        s.Password = password;
        watch(&FtpSession::Connected, "Connected");
        watch(&FtpSession::Reply, "Reply");
        watch(&FtpSession::List, "List");
        watch(&FtpSession::Done, "Done");
        watch(&FtpSession::Progress, "Progress");
        watch(&FtpSession::Error, "Error");
    }

    static QString text(const QString& v) { return v; }
    static QString text(qint64 v) { return QString::number(v); }

    template <typename Signal> void watch(Signal signal, const QString& kind) {
        QObject::connect(&s, signal, &s, [this, kind](const auto&... values) {
            all << QStringList{kind, text(values)...}.join(u':');
            history << all.last();
            if (onEvent)
                onEvent(kind);
        });
    }

    QString last() const { return all.value(all.size() - 1); }
    bool finished() const { return count({last()}, "^(Connected|Done|Error)") > 0; }
    QStringList values(const QString& kind) const {
        return all.filter(QRegularExpression('^' + kind + ':')).replaceInStrings(kind + ':', "");
    }

    // Starts an action and waits for its final event; nothing may be raised inside the call.
    bool run(const std::function<void(FtpSession&)>& action) {
        all.clear();
        action(s);
        return all.isEmpty() && QTest::qWaitFor([this] { return finished(); }, kWait);
    }
    bool connect() { return run(&FtpSession::Connect) && last() == "Connected:0"; }
};

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

// The FTP session against a real pyftpdlib server.
class TestFtpSession : public QObject {
    Q_OBJECT
    std::unique_ptr<FtpServer> ftp;
    QByteArray content{kSize, Qt::Uninitialized};
    QTemporaryDir local;
    QTcpServer silent; // takes connections and never greets
    quint16 closedPort = 0;

private slots:
    void initTestCase() {
        QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(content.data()), kSize / 4);
        ftp = std::make_unique<FtpServer>(kUser, kPassword);
        QVERIFY2(ftp->started(), qPrintable(ftp->failure()));
        QCOMPARE(ftp->site(), "127.0.0.1:" + QString::number(ftp->port()));
        QVERIFY(QDir(ftp->root()).mkpath("updates"));
        QVERIFY(writeFile(ftp->root() + "/updates/" + kFile, content));
        QVERIFY(writeFile(ftp->root() + u'/' + kFile, content));
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        closedPort = probe.serverPort();
    }

    void wholeUpdateSequence_data() {
        columns<QString, QString>("user", "directory");
        row("account, relative directory", kUser, "updates");
        row("anonymous, absolute directory", QString(), "/updates");
        row("account, root", kUser, "/");
    }

    void wholeUpdateSequence() {
        QFETCH(QString, user);
        QFETCH(QString, directory);
        Probe p(ftp->site(), user, user.isEmpty() ? QString() : kPassword);
        QVERIFY(p.connect());
        QCOMPARE(count(p.all, "^Reply:230 "), 1);
        QCOMPARE(p.s.State(), 1);

        QVERIFY(p.run([&](FtpSession& s) { s.ChangeDirectory(directory); }));
        QVERIFY(count(p.all, "^Reply:250 ") > 0);
        QCOMPARE(p.last(), "Done");

        QVERIFY(p.run([](FtpSession& s) { s.ListEntry(kFile); }));
        QCOMPARE(p.all.mid(p.all.size() - 2, 1), p.all.filter(QRegularExpression("^List:")));
        QCOMPARE(p.last(), "Done");
        const QString entry = p.values("List").value(0);
        QCOMPARE(entry.split(u' ', Qt::SkipEmptyParts).value(4), QString::number(kSize));
        QVERIFY2(entry.endsWith(" " + kFile), qPrintable(entry));

        const QString target = local.filePath("update.bin");
        p.s.Timeout = 600;
        QElapsedTimer clock;
        clock.start();
        QVERIFY(p.run([&](FtpSession& s) { s.GetFile(target, kFile); }));
        QCOMPARE(p.all.mid(p.all.size() - 2),
                 (QStringList{"Progress:" + Probe::text(kSize), "Done"}));
        QCOMPARE(count(p.all, "^Reply:226 "), 1);
        const QStringList progress = p.values("Progress");
        for (qsizetype i = 1; i < progress.size(); ++i)
            QVERIFY(progress[i].toLongLong() >= progress[i - 1].toLongLong());
        QVERIFY(progress.size() <= clock.elapsed() / 50 + 2);
        QFile file(target);
        QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == content);

        QVERIFY(p.run(&FtpSession::Disconnect));
        QCOMPARE(p.all, QStringList{"Done"});
        QCOMPARE(p.s.State(), 0);
        // One login for the whole sequence: every action ran on the same control connection.
        QCOMPARE(count(p.history, "^Reply:220 "), 1);
        QCOMPARE(count(p.history, "^Error"), 0);
    }

    void connectFails_data() {
        // a pattern
        columns<QString, QString, long, QString>("host", "password", "timeout", "error");
        const QString closed = QString::number(closedPort);
        const QString silentSite = "127.0.0.1:" + QString::number(silent.serverPort());
        row("wrong password", ftp->site(), "wrong", 5L, "^Error:530:");
        row("refused", "127.0.0.1:" + closed, kPassword, 5L, "^Error:7:.*port " + closed + ' ');
        row("no port means 21", "127.0.0.1", kPassword, 5L, "^Error:7:.*port 21 ");
        row("unknown host", "no-such-host.invalid", kPassword, 5L, "^Error:6:");
        row("server never greets", silentSite, kPassword, 1L, "^Error:28:");
        row("not a host", "ftp.example.com/x", kPassword, 5L, "^Error:3:");
    }

    void connectFails() {
        QFETCH(QString, host);
        QFETCH(QString, password);
        QFETCH(long, timeout);
        QFETCH(QString, error);
        Probe p(host, kUser, password);
        p.s.Timeout = timeout;
        QVERIFY(p.run(&FtpSession::Connect));
        QVERIFY2(count({p.last()}, error) == 1, qPrintable(p.all.join('\n')));
        QCOMPARE(p.s.State(), 0);
    }

    // A missing file is no error to ListEntry; a missing directory or download ends the session.
    void missingOnServer() {
        Probe p(ftp->site());
        QVERIFY(p.connect());
        QVERIFY(p.run([](FtpSession& s) { s.ListEntry("missing.upd"); }));
        QCOMPARE(p.all.filter(QRegularExpression("^(List|Done|Error)")),
                 (QStringList{"List:", "Done"}));
        QCOMPARE(p.s.State(), 1);

        QVERIFY(p.run([&](FtpSession& s) { s.GetFile(local.filePath("x"), "missing.upd"); }));
        QCOMPARE(count({p.last()}, "^Error:550:"), 1);
        QCOMPARE(p.s.State(), 0);
        QVERIFY(p.run([](FtpSession& s) { s.ListEntry(kFile); }));
        QCOMPARE(p.all, QStringList{"Error:10057:Not connected"});

        QVERIFY(p.connect());
        QVERIFY(p.run([](FtpSession& s) { s.ChangeDirectory("missing"); }));
        QCOMPARE(count({p.last()}, "^Error:550:"), 1);
        QCOMPARE(p.s.State(), 0);
    }

    void actionWhileBusyFailsAlone() {
        Probe p(ftp->site());
        p.s.Connect();
        p.s.ListEntry(kFile);
        QTRY_VERIFY_WITH_TIMEOUT(p.all.contains("Connected:0"), kWait);
        QCOMPARE(p.all.first(), "Error:10036:Busy");
        QCOMPARE(p.s.State(), 1);
    }

    // The program stops a download by disconnecting; what arrived stays on disk.
    void stoppingSlowDownload() {
        FtpServer slow(kUser, kPassword, 64 * 1024);
        QVERIFY2(slow.started(), qPrintable(slow.failure()));
        QVERIFY(writeFile(slow.root() + u'/' + kFile, content));
        Probe p(slow.site());
        QVERIFY(p.connect());
        p.onEvent = [&](const QString& kind) {
            if (kind == "Progress")
                p.s.Disconnect();
        };
        const QString target = local.filePath("partial.bin");
        QVERIFY(p.run([&](FtpSession& s) { s.GetFile(target, kFile); }));
        QCOMPARE(count(p.all, "^(Progress|Done|Error)"), 2);
        QCOMPARE(p.last(), "Done");
        const qint64 kept = QFile(target).size();
        QVERIFY(kept >= p.values("Progress").value(0).toLongLong() && kept < kSize);
        QCOMPARE(p.s.State(), 0);
        p.onEvent = nullptr;
        QVERIFY(p.connect()); // the session starts over cleanly
    }

    void deletedByItsOwnHandler_data() {
        columns<QString, QString>("kind", "password");
        for (const char* kind : {"Reply", "Connected", "Progress", "Done"})
            row(kind, kind, kPassword);
        row("Error", "Error", "wrong");
    }

    void deletedByItsOwnHandler() {
        QFETCH(QString, kind);
        QFETCH(QString, password);
        Probe p(ftp->site(), kUser, password);
        p.onEvent = [&](const QString& raised) {
            if (raised == kind)
                p.owned.reset();
        };
        p.s.Connect();
        QTRY_VERIFY_WITH_TIMEOUT(!p.owned || p.finished(), kWait);
        if (p.owned)
            p.s.GetFile(local.filePath("deleted.bin"), kFile);
        QTRY_VERIFY_WITH_TIMEOUT(!p.owned, kWait);
    }
};

QTEST_GUILESS_MAIN(TestFtpSession)
#include "tst_ftpsession.moc"
