#include "FreshUserFolders.h"
#include "FtpServer.h"
#include "Rows.h"
#include "base/MsgBox.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "update/TLFTP.h"
#include "update/frmTLFTP.h"
#include "update/frmTLProgress.h"
#include "update/frmTLUpdate.h"
#include <QApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QTimer>
#include <QtTest>

namespace {

// An update file that tells the test it was started, and by whom.
const QByteArray kUpdateScript =
    "#!/bin/sh\n"
    "echo \"$TAVLO_UPDATE_WAIT_PID\" > \"$TAVLO_INSTALL_DIR/update-started\"\n"
    "# padding so that a slow server takes a while\n" +
    QByteArray(600 * 1024, '#') + "\n";

QString sha256(const QByteArray& bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

} // namespace

// The update offer and the transfer against a real FTP server: what is fetched, logged, shown
// and started, and what a failure or a cancel leaves behind.
class TestUpdate : public QObject {
    Q_OBJECT
    QList<MsgBoxCall> boxes;
    std::function<int(const MsgBoxCall&)> answer;
    QString shots;

    QString folder() const { return TLFTP::Folder(); }
    QString marker() const { return folder() + QStringLiteral("/update-started"); }
    QString log() const {
        QFile file(folder() + QStringLiteral("/TLFTPlog.txt"));
        return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll()) : QString();
    }

    // The update file on the server, where the release says it is.
    static bool publish(const FtpServer& ftp) {
        QDir().mkpath(ftp.root() + QStringLiteral("/releases"));
        QFile published(ftp.root() + QStringLiteral("/releases/tavlo.run"));
        return published.open(QIODevice::WriteOnly) &&
               published.write(kUpdateScript) == kUpdateScript.size();
    }

    // Points the client at the server's file as the version check would, then says Yes.
    void updateFrom(const FtpServer& ftp, const QString& password, const QString& file,
                    const QString& digest) {
        auto& coordinates = TLMain().FTP();
        coordinates = TLFTP();
        coordinates.strFTPSite = ftp.site();
        coordinates.strFTPDirectory = QStringLiteral("/releases");
        coordinates.strFTPUpdateFileName = file;
        coordinates.strFTPUserName = QStringLiteral("update");
        coordinates.strFTPPassword = password;
        coordinates.strUpdateSha256 = digest;
        Form<frmTLUpdate>().cmdYes->click();
    }

private slots:
    void initTestCase() {
        SetMsgBoxHook([this](const MsgBoxCall& call) {
            boxes << call;
            return answer ? answer(call) : int(vb::vbOK);
        });
        shots = qEnvironmentVariable("TAVLO_BINARY_DIR", QDir::tempPath()) +
                QStringLiteral("/test-screenshots");
        QDir().mkpath(shots);
    }
    void init() {
        boxes.clear();
        answer = nullptr;
        for (const QString& name : {QStringLiteral("update-started"),
                                    QStringLiteral("TLFTPlog.txt"), QStringLiteral("tavlo.run")})
            QFile::remove(folder() + QLatin1Char('/') + name);
    }
    void cleanupTestCase() { init(); }

    void offerShowsItsText() {
        auto& offer = Form<frmTLUpdate>();
        QCOMPARE(offer.windowTitle(), QStringLiteral("Update Tavlo"));
        QVERIFY(offer.lblUpdate->text().endsWith(
            QStringLiteral("work correctly.\r\n\rWould you like to proceed with the update?")));
        offer.show();
        QVERIFY(QTest::qWaitForWindowExposed(&offer));
        QVERIFY(offer.grab().save(shots + QStringLiteral("/update-offer.png")));
        offer.cmdNo->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!IsLoaded<frmTLUpdate>() && !QFileInfo::exists(marker()));
    }

    // Yes: the file comes down whole and starts only when nothing went wrong and it is the
    // file that was published.
    // Rows that start the file come last: starting ends the program for good.
    void transfer_data() {
        columns<QString, QString, QString, bool, QString>("password", "file", "digest", "started",
                                                          "logged");
        const QString good = sha256(kUpdateScript);
        row("digest differs", "secret", "tavlo.run", QString(64, '0'), false,
            "does not match its published checksum");
        row("wrong password", "guess", "tavlo.run", "", false, "AsyncError:  ");
        row("file missing", "secret", "gone.run", "", false, "File missing from remote server");
        row("good", "secret", "tavlo.run", "", true, "File Transfered Successfully");
        row("digest matches", "secret", "tavlo.run", good, true, "Disconnecting");
    }
    void transfer() {
        QFETCH(QString, password);
        QFETCH(QString, file);
        QFETCH(QString, digest);
        QFETCH(bool, started);
        QFETCH(QString, logged);
        FtpServer ftp(QStringLiteral("update"), QStringLiteral("secret"));
        QVERIFY2(ftp.started(), qPrintable(ftp.failure()));
        QVERIFY(publish(ftp));

        updateFrom(ftp, password, file, digest);
        const bool failed =
            password != QStringLiteral("secret") || file != QStringLiteral("tavlo.run");
        QCOMPARE(TLMain().FTP().blnAsyncError, failed);
        QCOMPARE(modTLMain::ProgramEnding(), started);
        QTRY_COMPARE(QFileInfo::exists(marker()), started);
        if (started) {
            QFile got(folder() + QStringLiteral("/tavlo.run"));
            QVERIFY(got.open(QIODevice::ReadOnly));
            QCOMPARE(got.readAll(), kUpdateScript);
            QFile pid(marker());
            QVERIFY(pid.open(QIODevice::ReadOnly));
            QCOMPARE(pid.readAll().trimmed().toLongLong(), QCoreApplication::applicationPid());
        }
        QVERIFY2(log().contains(logged), qPrintable(log()));
        QVERIFY(log().startsWith(QStringLiteral("Transfering files from Tavlo...     ")));
        QCOMPARE(boxes.size(), failed || (!digest.isEmpty() && !started) ? 1 : 0);
        if (failed)
            QVERIFY(boxes[0].text.startsWith(
                QStringLiteral("There was a problem with your network connection. \r\r")));
        QVERIFY(!IsLoaded<frmTLFTP>() && !IsLoaded<frmTLProgress>());
    }

    // Cancel asks first: No lets the download go on, Yes stops it and leaves the part fetched.
    void cancel_data() {
        columns<int>("reply");
        row("no", int(vb::vbNo));
        row("yes", int(vb::vbYes));
    }
    void cancel() {
        QFETCH(int, reply);
        FtpServer ftp(QStringLiteral("update"), QStringLiteral("secret"), 100 * 1024);
        QVERIFY2(ftp.started(), qPrintable(ftp.failure()));
        QVERIFY(publish(ftp));
        answer = [reply](const MsgBoxCall&) { return reply; };
        QString rateSeen;
        QString percentSeen;
        QTimer watch;
        connect(&watch, &QTimer::timeout, [&] {
            auto* progress = LoadedForm<frmTLProgress>();
            if (!progress || !progress->isVisible() || progress->prgProgress->value() < 300000)
                return;
            watch.stop();
            rateSeen = progress->txtTransferRate->text();
            percentSeen = progress->txtPercent->text();
            if (reply == int(vb::vbNo))
                progress->grab().save(shots + QStringLiteral("/update-progress.png"));
            progress->cmdCancel->click();
        });
        watch.start(50);
        updateFrom(ftp, QStringLiteral("secret"), QStringLiteral("tavlo.run"), QString());
        QCOMPARE(boxes.value(0).text,
                 QStringLiteral("Are you sure you wish to cancel this download?"));
        QCOMPARE(boxes.value(0).style, int(vb::vbYesNo + vb::vbQuestion));
        QVERIFY(rateSeen != QStringLiteral("N/A")); // more than a second in, the rate shows
        QVERIFY(percentSeen.endsWith(QLatin1Char('%')));
        const bool cancelled = reply == int(vb::vbYes);
        QCOMPARE(TLMain().FTP().blnAsyncError, cancelled);
        QTRY_COMPARE(QFileInfo::exists(marker()), !cancelled);
        const qint64 fetched = QFileInfo(folder() + QStringLiteral("/tavlo.run")).size();
        QVERIFY(cancelled ? fetched > 0 && fetched < kUpdateScript.size()
                          : fetched == kUpdateScript.size());
        QCOMPARE(log().contains(QStringLiteral("User Canceled Download")), cancelled);
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
        QFETCH(QString, entry);
        QFETCH(QString, size);
        QFETCH(QString, percent);
        auto& control = Form<frmTLFTP>();
        control.lpstrSize = QStringLiteral("kept");
        control.mFtp_List(entry);
        QCOMPARE(control.lpstrSize, size);
        if (size == QStringLiteral("2000"))
            QCOMPARE(control.lpstrName, QStringLiteral("tavlo.run"));
        auto& ftp = TLMain().FTP();
        ftp.blnSentByGet = true;
        ftp.dblOldTime = TLFTP::Timer();
        auto& progress = Form<frmTLProgress>();
        progress.ResetTextBoxes();
        control.mFtp_Progress(500);
        QCOMPARE(progress.txtBytes->text(), QStringLiteral("500"));
        QCOMPARE(progress.txtPercent->text(), percent);
        QCOMPARE(progress.txtTransferRate->text(), QStringLiteral("N/A"));
        ftp.blnSentByGet = false;
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
