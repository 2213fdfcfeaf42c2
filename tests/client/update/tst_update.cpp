#include "BoxRecorder.h"
#include "FreshUserFolders.h"
#include "FtpServer.h"
#include "Rows.h"
#include "Screenshot.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "update/FtpSession.h"
#include "update/TLFTP.h"
#include "update/frmTLFTP.h"
#include "update/frmTLProgress.h"
#include "update/frmTLUpdate.h"
#include <QApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <functional>

namespace {

// An update file that tells the test it was started, and by whom.
const QByteArray kUpdateScript =
    "#!/bin/sh\n"
    "echo \"$TAVLO_UPDATE_WAIT_PID\" > \"$TAVLO_INSTALL_DIR/update-started\"\n"
    "# padding so that a slow server takes a while\n" +
    QByteArray(600 * 1024, '#') + "\n";

constexpr qint64 kSessionSize = 3 * 1024 * 1024 + 17; // not a multiple of any buffer
const QString kUser = QStringLiteral("ann");
const QString kPassword = QStringLiteral("secret");
const QString kFile = QStringLiteral("Tavlo 1.upd");

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(bytes) == bytes.size();
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A session and everything it raised, in order, as "Kind" or "Kind:value[:value]".
struct Probe {
    FtpSession s;
    QStringList all; // since the session was made
    qsizetype from = 0;

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
        });
    }

    QStringList since() const { return all.mid(from); } // the last action's events
    QString last() const { return all.value(all.size() - 1); }
    bool finished() const { return from < all.size() && last().contains(kFinal); }
    static inline const QRegularExpression kFinal{"^(Connected|Done|Error)"};

    // Starts an action and waits for its final event; nothing may be raised inside the call.
    bool run(const std::function<void(FtpSession&)>& action) {
        from = all.size();
        action(s);
        return from == all.size() && QTest::qWaitFor([this] { return finished(); }, 10000);
    }
};

} // namespace

// The FTP session, then the update offer and the transfer, against a real FTP server: what is
// fetched, logged, shown and started, and what a failure or a cancel leaves behind.
class TestUpdate : public QObject {
    Q_OBJECT
    BoxRecorder boxes;
    std::unique_ptr<FtpServer> server; // the session's server, with the file at its root and below
    QByteArray content{kSessionSize, Qt::Uninitialized};
    QTemporaryDir local;
    QTcpServer silent; // takes connections and never greets

    QString folder() const { return TLFTP::Folder(); }
    QString marker() const { return folder() + QStringLiteral("/update-started"); }
    QString log() const {
        return QString::fromLocal8Bit(readFile(folder() + QStringLiteral("/TLFTPlog.txt")));
    }

    // Publishes the update file where the release says it is, points the client at it as the
    // version check would, then says Yes.
    void updateFrom(const FtpServer& ftp, const QString& password, const QString& file,
                    const QString& digest) {
        QVERIFY(writeFile(ftp.root() + QStringLiteral("/releases/tavlo.run"), kUpdateScript));
        auto& coordinates = TLMain().FTP();
        coordinates = TLFTP();
        coordinates.strFTPSite = ftp.site();
        coordinates.strFTPDirectory = QStringLiteral("/releases");
        coordinates.strFTPUpdateFileName = file;
        coordinates.strFTPUserName = kUser;
        coordinates.strFTPPassword = password;
        coordinates.strUpdateSha256 = digest;
        Form<frmTLUpdate>().cmdYes->click();
    }

private slots:
    void initTestCase() {
        QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(content.data()), kSessionSize / 4);
        server = std::make_unique<FtpServer>(kUser, kPassword);
        QVERIFY2(server->started(), qPrintable(server->failure()));
        QVERIFY(writeFile(server->root() + "/updates/" + kFile, content));
        QVERIFY(writeFile(server->root() + u'/' + kFile, content));
        QVERIFY(silent.listen(QHostAddress::LocalHost));
    }

    void init() {
        boxes.install();
        for (const char* name : {"update-started", "TLFTPlog.txt", "tavlo.run"})
            QFile::remove(folder() + QLatin1Char('/') + QLatin1String(name));
    }
    void cleanupTestCase() { init(); }

    // Connect, change directory, list, fetch and disconnect on one control connection: one
    // greeting, the whole file, progress at most every 50 ms and the whole count last. An
    // action started while another runs fails alone.
    void wholeUpdateSequence_data() {
        columns<QString, QString>("user", "directory");
        row("account, relative directory", kUser, "updates");
        row("anonymous, absolute directory", QString(), "/updates");
        row("account, root", kUser, "/");
    }
    void wholeUpdateSequence() {
        auto [user, directory] = fetch<QString, QString>("user", "directory");
        Probe p(server->site(), user, user.isEmpty() ? QString() : kPassword);
        p.s.Connect();
        p.s.ListEntry(kFile); // refused while the login runs, which goes on
        QTRY_VERIFY_WITH_TIMEOUT(p.all.contains("Connected:0"), 10000);
        QCOMPARE(p.all.first(), "Error:10036:Busy");
        QVERIFY(p.run([&](FtpSession& s) { s.ChangeDirectory(directory); }));
        QCOMPARE(p.last(), "Done");

        QVERIFY(p.run([](FtpSession& s) { s.ListEntry(kFile); }));
        const QString entry = p.since().filter(QRegularExpression("^List:")).value(0);
        QCOMPARE(p.since().mid(p.since().size() - 2), (QStringList{entry, "Done"}));
        QCOMPARE(entry.split(u' ', Qt::SkipEmptyParts).value(4), QString::number(kSessionSize));
        QVERIFY2(entry.endsWith(" " + kFile), qPrintable(entry));

        const QString target = local.filePath("update.bin");
        QElapsedTimer clock;
        clock.start();
        QVERIFY(p.run([&](FtpSession& s) { s.GetFile(target, kFile); }));
        QCOMPARE(p.since().mid(p.since().size() - 2),
                 (QStringList{"Progress:" + QString::number(kSessionSize), "Done"}));
        QVERIFY(p.since().filter(QRegularExpression("^Progress:")).size() <=
                clock.elapsed() / 50 + 2);
        QVERIFY(readFile(target) == content);

        QVERIFY(p.run(&FtpSession::Disconnect));
        QCOMPARE(p.since(), QStringList{"Done"});
        QCOMPARE(p.s.State(), 0);
        QCOMPARE(p.all.filter(QRegularExpression("^Reply:220 ")).size(), 1);
        QCOMPARE(p.all.filter(QRegularExpression("^Error")).size(), 1);
    }

    void connectFails_data() {
        columns<QString, QString, long, QString>("host", "password", "timeout", "error");
        const QString silentSite = "127.0.0.1:" + QString::number(silent.serverPort());
        row("wrong password", server->site(), "wrong", 5L, "^Error:530:");
        row("refused", "127.0.0.1:1", kPassword, 5L, "^Error:7:.*port 1 "); // nothing listens on 1
        row("no port means 21", "127.0.0.1", kPassword, 5L, "^Error:7:.*port 21 ");
        row("unknown host", "no-such-host.invalid", kPassword, 5L, "^Error:6:");
        row("server never greets", silentSite, kPassword, 1L, "^Error:28:");
        row("not a host", "ftp.example.com/x", kPassword, 5L, "^Error:3:");
    }
    void connectFails() {
        auto [host, password, timeout, error] =
            fetch<QString, QString, long, QString>("host", "password", "timeout", "error");
        Probe p(host, kUser, password);
        p.s.Timeout = timeout;
        QVERIFY(p.run(&FtpSession::Connect));
        QVERIFY2(p.last().contains(QRegularExpression(error)), qPrintable(p.all.join('\n')));
        QCOMPARE(p.s.State(), 0);
    }

    // Yes: the file comes down whole and starts only when nothing went wrong and it is the
    // file that was published. Cancel asks first: No lets the download go on, Yes stops it and
    // leaves the part fetched; more than a second in, the rate and the share show.
    // Rows that start the file come last: starting ends the program for good.
    void transfer_data() {
        columns<QString, QString, QString, int, bool, QString, QString>(
            "password", "file", "digest", "cancel", "started", "box", "logged");
        const QString good = QString::fromLatin1(
            QCryptographicHash::hash(kUpdateScript, QCryptographicHash::Sha256).toHex());
        const QString failed = QStringLiteral("There was a problem with your network connection.");
        const QString asked = QStringLiteral("Are you sure you wish to cancel this download?");
        row("digest differs", "secret", "tavlo.run", QString(64, '0'), 0, false,
            "The update file that came down is not", "does not match its published checksum");
        row("wrong password", "guess", "tavlo.run", "", 0, false, failed, "AsyncError:  ");
        row("file missing", "secret", "gone.run", "", 0, false, failed, "File missing from remote");
        row("cancelled", "secret", "tavlo.run", "", int(vb::vbYes), false, asked, "User Canceled");
        row("cancel declined", "secret", "tavlo.run", "", int(vb::vbNo), true, asked, "Transfered");
        row("good", "secret", "tavlo.run", "", 0, true, "", "File Transfered Successfully");
        row("digest matches", "secret", "tavlo.run", good, 0, true, "", "Disconnecting");
    }
    void transfer() {
        auto [password, file, digest, cancel, started, box, logged] =
            fetch<QString, QString, QString, int, bool, QString, QString>(
                "password", "file", "digest", "cancel", "started", "box", "logged");
        std::unique_ptr<FtpServer> slow; // slow enough to cancel half way
        if (cancel)
            slow = std::make_unique<FtpServer>(kUser, kPassword, 100 * 1024);
        boxes.answer = cancel;
        QString rate;
        QString percent;
        QTimer watch;
        connect(&watch, &QTimer::timeout, [&] {
            auto* progress = LoadedForm<frmTLProgress>();
            if (!progress || !progress->isVisible() || progress->prgProgress->value() < 300000)
                return;
            watch.stop();
            rate = progress->txtTransferRate->text();
            percent = progress->txtPercent->text();
            if (cancel == int(vb::vbNo))
                SaveScreenshot(progress, QStringLiteral("update-progress"));
            progress->cmdCancel->click();
        });
        if (cancel)
            watch.start(50);
        updateFrom(slow ? *slow : *server, password, file, digest);
        QCOMPARE(TLMain().FTP().blnAsyncError,
                 box.startsWith(QStringLiteral("There was")) || cancel == int(vb::vbYes));
        QCOMPARE(modTLMain::ProgramEnding(), started);
        QTRY_COMPARE(QFileInfo::exists(marker()), started);
        const QByteArray fetched = readFile(folder() + QStringLiteral("/tavlo.run"));
        if (started) {
            QCOMPARE(fetched, kUpdateScript);
            QCOMPARE(readFile(marker()).trimmed().toLongLong(), QCoreApplication::applicationPid());
        }
        if (cancel == int(vb::vbYes))
            QVERIFY(!fetched.isEmpty() && fetched.size() < kUpdateScript.size());
        if (cancel)
            QVERIFY(rate != QStringLiteral("N/A") && percent.endsWith(QLatin1Char('%')));
        QVERIFY2(log().contains(logged), qPrintable(log()));
        QCOMPARE(boxes.size(), box.isEmpty() ? 0 : 1);
        QCOMPARE(boxes.value(0).text.left(box.size()), box);
        QVERIFY(!IsLoaded<frmTLFTP>() && !IsLoaded<frmTLProgress>());
    }

    // The listing gives the size; a directory is passed over; a size that is no number leaves
    // the share unshown while bytes still count; no rate within the first second.
    void listingAndProgress_data() {
        columns<QString, QString, QString>("entry", "size", "percent");
        row("file", "-rw-r--r-- 1 2000 update update Nov 23 12:00 tavlo.run\r\n", "2000", "25%");
        row("directory", "drwxr-xr-x 2 4096 update update Nov 23 12:00 tavlo.run", "kept", "");
        row("size no number", "-rw-r--r-- 1 many update update Nov 23 12:00 x", "many", "");
    }
    void listingAndProgress() {
        auto [entry, size, percent] = fetch<QString, QString, QString>("entry", "size", "percent");
        auto& control = Form<frmTLFTP>();
        control.lpstrSize = QStringLiteral("kept");
        control.mFtp_List(entry);
        QCOMPARE(control.lpstrSize, size);
        TLMain().FTP().blnSentByGet = true;
        TLMain().FTP().dblOldTime = TLFTP::Timer();
        auto& progress = Form<frmTLProgress>();
        control.mFtp_Progress(500);
        QCOMPARE(progress.txtBytes->text(), QStringLiteral("500"));
        QCOMPARE(progress.txtPercent->text(), percent);
        QCOMPARE(progress.txtTransferRate->text(), QStringLiteral("N/A"));
        TLMain().FTP().blnSentByGet = false;
        Unload<frmTLFTP>();
        Unload<frmTLProgress>();
    }
};

int main(int argc, char** argv) {
    FreshUserFolders folders;
    QApplication app(argc, argv);
    app.setQuitOnLastWindowClosed(false);
    TestUpdate test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_update.moc"
