#include "BoxRecorder.h"
#include "FakeNetwork.h"
#include "FreshUserFolders.h"
#include "TestHttpServer.h"
#include "base/Forms.h"
#include "config/frmTLSettings.h"
#include "config/modTLRegistry.h"
#include "identity/frmTLLogin.h"
#include "platform/CommandLine.h"
#include "platform/SettingsStore.h"
#include "platform/SingleInstance.h"
#include "shell/AppVersion.h"
#include "shell/TLMain.h"
#include "shell/frmTLMain.h"
#include "shell/modTLMain.h"
#include "update/frmTLUpdate.h"

#include "Rows.h"
#include "Rowsets.h"
#include "Screenshot.h"
#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

// The start-up: one instance a user, the first request and the version decision.
class TestStartup : public QObject {
    Q_OBJECT
    BoxRecorder boxes;

private slots:
    void init() {
        boxes.install();
        CommandLine::SetArguments(QStringList{});
        TLMain().SetDataAccess(nullptr);
        TLMain().SetFTP(nullptr);
        TLMain().LatestVersionMajor = TLMain().LatestVersionMinor = 0;
        TLMain().LatestVersionRevision = 0;
    }
    void cleanup() {
        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void versionComparison_data() {
        columns<QList<int>, QList<int>, bool>("latest", "running", "newer");
        row("same", QList<int>{1, 4, 0}, QList<int>{1, 4, 0}, false);
        row("major up", QList<int>{2, 0, 0}, QList<int>{1, 9, 9}, true);
        row("major down, minor up", QList<int>{1, 9, 9}, QList<int>{2, 0, 0}, false);
        row("minor up", QList<int>{1, 4, 0}, QList<int>{1, 3, 9}, true);
        row("minor down, revision up", QList<int>{1, 3, 9}, QList<int>{1, 4, 0}, false);
        row("revision up", QList<int>{1, 4, 2}, QList<int>{1, 4, 1}, true);
        row("revision down", QList<int>{1, 4, 0}, QList<int>{1, 4, 1}, false);
    }
    void versionComparison() {
        auto [latest, running, newer] =
            fetch<QList<int>, QList<int>, bool>("latest", "running", "newer");
        auto v = [](int n) { return static_cast<std::int16_t>(n); };
        QCOMPARE(modTLMain::IsNewerVersion(v(latest[0]), v(latest[1]), v(latest[2]), v(running[0]),
                                           v(running[1]), v(running[2])),
                 newer);
    }

    // A second instance tells the user, asks the first to raise its window, and must end.
    void secondInstanceIsTurnedAway() {
        const QString key =
            QStringLiteral("tavlo-startup-test-%1").arg(QCoreApplication::applicationPid());
        SingleInstance first(key);
        QVERIFY(modTLMain::ClaimSingleInstance(first));
        QSignalSpy raised(&first, &SingleInstance::RaiseRequested);

        SingleInstance second(key);
        QVERIFY(!modTLMain::ClaimSingleInstance(second));
        QCOMPARE(boxes.size(), 1);
        QVERIFY(boxes[0].text.startsWith(QStringLiteral("Tavlo is already open.")));
        QVERIFY(raised.wait(3000));
        QCOMPARE(raised.at(0).at(0).toString(), QStringLiteral("Tavlo"));
    }

    // The version check is the first request and fills the version and transfer data; the
    // newer version is offered (and declined here) only with a network. The sign-in dialog waits
    // beside the tray; with the server down, one message and the settings dialog instead.
    void startUp_data() {
        columns<bool, QStringList, bool>("up", "arguments", "offered");
        row("server down", false, QStringList{}, false);
        row("network", true, QStringList{}, true);
        row("/ignorenetwork", true, QStringList{"tavlo", "/IgnoreNetwork"}, false);
    }
    void startUp() {
        auto [up, arguments, offered] =
            fetch<bool, QStringList, bool>("up", "arguments", "offered");
        CommandLine::SetArguments(arguments);
        NetworkInterfaces::SetSource(&FakeNetwork::Wired);
        QString offer;
        QTimer watch;
        connect(&watch, &QTimer::timeout, [&] {
            if (auto* prompt = qobject_cast<frmTLUpdate*>(QApplication::activeModalWidget())) {
                offer = prompt->lblUpdate->text();
                SaveScreenshot(prompt, QStringLiteral("update-offer"));
                prompt->cmdNo->click();
            }
        });
        watch.start(20);
        TestHttpServer server;
        const int major = AppVersion::Major() + 1;
        server.setAnswer({200, "text/xml",
                          RowsetBytes({"VersionString", "FTPSite", "FTPDirectory",
                                       "FTPUpdateFileName", "FTPUserName", "FTPPassword",
                                       "VersionMajor", "VersionMinor", "VersionRevision"},
                                      {{QStringLiteral("%1.0.0").arg(major), "ftp.example",
                                        "/tavlo", "Tavlo.exe", "update", "secret", major, 0, 0}}),
                          0});
        if (!up)
            server.stop();
        SettingsStore::WriteText(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey,
                                 QStringLiteral("WebAddress"), server.baseUrl());
        QVERIFY(modTLMain::Main());
        QCOMPARE(boxes.size(), up ? 0 : 1); // the gateway's own (tst_data)
        QCOMPARE(server.requests().value(0).body,
                 up ? QByteArray("strSQL=EXECUTE%20tl%5FVersionCheck") : QByteArray());
        QCOMPARE(server.requests().size(), up ? 1 : 0);
        QCOMPARE(TLMain().LatestVersionReleased, up ? QStringLiteral("%1.0.0").arg(major) : "");
        QCOMPARE(TLMain().FTP().strFTPSite, up ? QStringLiteral("ftp.example") : "");
        QCOMPARE(offer.startsWith(QStringLiteral("A new version of Tavlo")), offered);
        QCOMPARE(Form<frmTLSettings>().isVisible(), !up);
        QCOMPARE(LoadedForm<frmTLLogin>() && LoadedForm<frmTLLogin>()->isVisible(), up);
        QVERIFY(Form<frmTLMain>().trayIcon->isVisible());
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestStartup)
#include "tst_startup.moc"
