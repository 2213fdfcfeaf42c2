#include "Rows.h"
#include "SignInFixture.h"
#include "board/frmTLView.h"
#include "chat/frmTLChat.h"
#include "shell/TrayDisplay.h"
#include "shell/TrayPictures.h"
#include "shell/frmTLMain.h"
#include "shell/frmTLWarningSysTray.h"
#include "shell/modTLMain.h"
#include <QProcess>
#include <atomic>

// What the tray shows for each state and the pictures themselves, the minimize reminder; then
// the tray on a real desktop tray (tint2 under Xvfb), driven against the demo server.
class TestTray : public QObject {
    Q_OBJECT
    SignInFixture f;
    QString shots;

    frmTLMain& tray() { return Form<frmTLMain>(); }

    void screenshot(const QString& name) {
        QTest::qWait(300); // let the tray repaint the new picture
        const QString path = shots + QLatin1Char('/') + name + QStringLiteral(".png");
        QCOMPARE(QProcess::execute(QStringLiteral("import"),
                                   {QStringLiteral("-window"), QStringLiteral("root"), path}),
                 0);
        QVERIFY(QFileInfo(path).size() > 0);
    }

    void clickTray(const QString& button, int repeat = 1) {
        const QPoint centre = tray().trayIcon->geometry().center();
        const QString command = QStringLiteral("mousemove %1 %2 click --repeat %3 --delay 80 %4");
        QCOMPARE(QProcess::execute(
                     QStringLiteral("xdotool"),
                     command.arg(centre.x()).arg(centre.y()).arg(repeat).arg(button).split(' ')),
                 0);
    }

    QAction* statusEntry(const QString& text) {
        for (QAction* entry : tray().mnuPopOptions)
            if (entry->text() == text)
                return entry;
        return nullptr;
    }

    void compareMenu(bool signedIn) {
        auto& t = tray();
        QCOMPARE(t.mnuSignIn->isEnabled(), !signedIn);
        for (QAction* entry :
             {t.mnuSignOut, t.mnuMiniView, t.mnuStandardView, t.mnuPopStatus, t.mnuLeaveMessage})
            QCOMPARE(entry->isEnabled(), signedIn);
    }

private slots:
    void initTestCase() {
        // The panel may still be taking the tray over on a busy machine.
        QTRY_VERIFY2_WITH_TIMEOUT(QSystemTrayIcon::isSystemTrayAvailable(),
                                  "no system tray on this display", 20000);
        QVERIFY2(f.start(), qPrintable(f.server->failure()));
        shots = qEnvironmentVariable("TAVLO_BINARY_DIR", QDir::tempPath()) +
                QStringLiteral("/test-screenshots");
        QDir().mkpath(shots);
        f.reset();
    }

    void pictureByState_data() {
        columns<bool, int, int, int>("valid", "status", "notes", "picture");
        row("signed out with notes", false, 3, 2, TrayDisplay::kSignedOut);
        row("in with notes", true, 3, 1, TrayDisplay::kInWithNotes);
        row("unavailable with notes", true, 6, 5, TrayDisplay::kUnavailableWithNotes);
        row("lunch with notes", true, 1, 1, TrayDisplay::kOtherWithNotes);
        row("negative count still counts", true, 7, -1, TrayDisplay::kOtherWithNotes);
        row("unknown status 9 with notes", true, 9, 3, TrayDisplay::kSignedOut);
        row("status 0", true, 0, 0, TrayDisplay::kSignedOut);
    }
    void pictureByState() {
        auto [valid, status, notes, picture] =
            fetch<bool, int, int, int>("valid", "status", "notes", "picture");
        QCOMPARE(TrayDisplay::PictureIndex(valid, status, notes), picture);
    }

    // Every picture exists at the tray's sizes; the four looks differ, and the notes mark shows.
    void picturesHaveTheirLooks() {
        using namespace TrayDisplay;
        for (int index = 1; index <= TrayPictures::kCount; ++index)
            QCOMPARE(TrayPictures::Icon(index).availableSizes().size(), 3);
        for (int size : {16, 22, 32}) {
            const auto image = [size](int index) {
                return TrayPictures::Picture(index, size).toImage();
            };
            QSet<QRgb> looks;
            for (int index : {kSignedOut, kIn, kUnavailable, kOther})
                looks << image(index).pixelColor(size / 5, size / 2).rgb();
            QCOMPARE(looks.size(), 4);
            for (auto [plain, marked] :
                 {std::pair{kIn, kInWithNotes}, std::pair{kUnavailable, kUnavailableWithNotes},
                  std::pair{kOther, kOtherWithNotes}}) {
                const QColor corner = image(marked).pixelColor(size * 3 / 4, size * 7 / 8);
                QVERIFY2(image(plain) != image(marked), qPrintable(QString::number(marked)));
                QVERIFY(corner.red() > 200 && corner.green() > 180 && corner.blue() < 120);
            }
        }
    }

    // The reminder shows until the user ticks the box once; from then on it stays away.
    void minimizeReminder() {
        frmTLWarningSysTray::ShowUnlessDeclined();
        QVERIFY(LoadedForm<frmTLWarningSysTray>()->isVisible());
        Form<frmTLWarningSysTray>().cmdOk->click();
        QVERIFY(!IsLoaded<frmTLWarningSysTray>());
        frmTLWarningSysTray::ShowUnlessDeclined();
        Form<frmTLWarningSysTray>().chkDontShowAgain->setChecked(true);
        Form<frmTLWarningSysTray>().cmdOk->click();
        QCOMPARE(f.stored("DontShowMinimize"), QStringLiteral("1"));
        frmTLWarningSysTray::ShowUnlessDeclined();
        QVERIFY(!IsLoaded<frmTLWarningSysTray>());
    }

    // Signed out the tray offers only the sign-in; a double click opens it, and signed in
    // the tray names the user and offers the rest, in the menu a right click shows.
    void signInFromTheTray() {
        modTLMain::BuildMenuItems();
        QTRY_VERIFY(tray().trayIcon->geometry().isValid()); // embedded in the tray
        QCOMPARE(tray().TrayPictureIndex(), TrayDisplay::kSignedOut);
        QCOMPARE(tray().trayIcon->toolTip(), QStringLiteral("Tavlo - Not Logged In"));
        compareMenu(false);
        screenshot(QStringLiteral("tray-signed-out"));

        clickTray(QStringLiteral("1"), 2);
        QTRY_VERIFY(IsLoaded<frmTLLogin>() && LoadedForm<frmTLLogin>()->isVisible());
        screenshot(QStringLiteral("sign-in-dialog"));
        Form<frmTLLogin>().txtUserName->setText(QStringLiteral("ann"));
        Form<frmTLLogin>().txtPassword->setText(QStringLiteral("demo"));
        Form<frmTLLogin>().cmdOK->click();
        QVERIFY(TLMain().ActiveUser().ValidUser());
        QVERIFY(f.boxes.isEmpty());

        TLMain().ActiveContact().NotesUnread = 0;
        modTLMain::BuildMenuItems();
        QCOMPARE(tray().TrayPictureIndex(), TrayDisplay::kIn);
        QCOMPARE(tray().trayIcon->toolTip(), QStringLiteral("Ann Lee\nStatus set to In"));
        compareMenu(true);
        QVERIFY(statusEntry(QStringLiteral("In"))->isChecked());
        screenshot(QStringLiteral("tray-in"));
        clickTray(QStringLiteral("3"));
        QTRY_VERIFY(tray().mnuPopupSys->isVisible());
        screenshot(QStringLiteral("tray-menu"));
        tray().mnuPopupSys->hide();
    }

    void quickStatusChangeReachesTheServer_data() {
        columns<QString, int>("status", "statusSys");
        row("Unavailable", "Unavailable", 6);
        row("Out", "Out", 8);
    }
    void quickStatusChangeReachesTheServer() {
        auto [status, statusSys] = fetch<QString, int>("status", "statusSys");
        QCOMPARE(f.sentBy([&] { statusEntry(status)->trigger(); }).value(0),
                 QStringLiteral("EXEC tl_SetStatus 1001,%1,NULL,NULL,NULL,5001").arg(statusSys));
        QVERIFY(statusEntry(status)->isChecked());
        screenshot(QStringLiteral("tray-") + QString(QTest::currentDataTag()).replace(' ', '-'));
    }

    void doubleClickOpensTheChosenView() {
        if (auto* board = LoadedForm<frmTLView>())
            board->hide();
        TLMain().Settings().ViewChoice = 2;
        clickTray(QStringLiteral("1"), 2);
        QTRY_VERIFY(LoadedForm<frmTLView>() && LoadedForm<frmTLView>()->isVisible());
        QCOMPARE(Form<frmTLView>().ActiveView, 2);
        screenshot(QStringLiteral("board-mini"));
    }

    // A message routed to a conversation window, answered, over the board.
    void chatWindowOverTheBoard() {
        auto& board = Form<frmTLView>();
        board.Socket_Chat(QStringLiteral("bob@localhost/Tavlo"), QString(),
                          QStringLiteral("Lunch at noon?"));
        QCOMPARE(board.chats.size(), 1);
        frmTLChat* window = board.chats[0];
        QVERIFY(QTest::qWaitForWindowExposed(window));
        window->txtChat->setText(QStringLiteral("Yes, <see> you there"));
        window->cmdSend->click();
        QCOMPARE(frmTLChat::Text(window->txtMessage),
                 QStringLiteral("<bob> Lunch at noon?\r\n<me> Yes, (see) you there"));
        screenshot(QStringLiteral("chat-window"));
        window->close();
    }

    // Signing out from the menu takes the board away; exit while signed in takes the icon away
    // first, then the sign-out reaches the server.
    void signOutAndExit() {
        tray().mnuSignOut->trigger();
        QVERIFY(!TLMain().ActiveUser().ValidUser());
        compareMenu(false);
        QVERIFY(!LoadedForm<frmTLView>() || !LoadedForm<frmTLView>()->isVisible());

        QVERIFY(TLMain().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        QPointer<frmTLMain> form = &tray();
        std::atomic<int> iconAtFirstStatement = -1; // the program waits for the answer meanwhile
        f.gateway->setObserver([&](const QString&) {
            if (iconAtFirstStatement == -1)
                iconAtFirstStatement = form && form->trayIcon->isVisible() ? 1 : 0;
        });
        form->mnuPopExit->trigger();
        f.gateway->setObserver({});
        QCOMPARE(int(iconAtFirstStatement), 0);
        QVERIFY(!TLMain().ActiveUser().ValidUser());
        QVERIFY(!IsLoaded<frmTLMain>());
    }
};

TAVLO_SIGNED_IN_TEST_MAIN(TestTray)
#include "tst_tray.moc"
