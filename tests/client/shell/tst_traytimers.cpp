#include "FakeNetwork.h"
#include "Rows.h"
#include "SignInFixture.h"
#include "board/frmTLView.h"
#include "platform/ActivitySource.h"
#include "platform/CommandLine.h"
#include "shell/TrayDisplay.h"
#include "shell/frmTLMain.h"
#include "shell/modTLMouseActivity.h"
#include <QApplication>

namespace {

// Activity as a test sets it: a pointer position, a key held, a press since the last look.
class FakeActivity : public ActivitySource {
public:
    QPoint position{500, 300};
    bool keyHeld = false;
    bool pressed = false;
    QPoint CursorPos() override { return position; }
    bool AnyKeyActive() override {
        const bool active = keyHeld || pressed;
        pressed = false;
        return active;
    }
};

} // namespace

// The tray form's timers against a real server, driven tick by tick: the idle watch on the
// signed-in user, the status poll (the server is the master of the user's status) and the
// network watch; a server gone during a poll ends the program.
class TestTrayTimers : public QObject {
    Q_OBJECT
    SignInFixture f;
    FakeActivity* activity = nullptr;
    QString contact;
    QString user;

    auto& root() { return TLMain(); }
    auto& watch() { return modTLMouseActivity::Current(); }
    frmTLMain& tray() { return Form<frmTLMain>(); }

    // Idle ticks as the timer would; answers what went to the server meanwhile.
    QStringList ticks(int count, const std::function<void()>& before = {}) {
        f.gateway->clear();
        for (int i = 0; i < count; ++i) {
            if (before)
                before();
            modTLMouseActivity::Tick(1000);
        }
        return f.gateway->statements();
    }
    QStringList moveSideways() {
        return ticks(1, [this] { activity->position.rx() += 7; });
    }

    // One tick of the status poll.
    QStringList tick() {
        return f.sentBy([this] { tray().tmrUpdateStatus_Timer(); });
    }
    QStringList pollStatements(const char* chat = ", 0") const {
        return {QStringLiteral("EXEC tl_GetContactNotesUnread  ") + contact,
                QStringLiteral("EXEC tl_GetContactStatus ") + contact,
                QStringLiteral("EXEC tl_UpdateChatStatus ") + contact + QString::fromLatin1(chat)};
    }

    QString setStatus(int statusSys, const QString& comment) const {
        return QStringLiteral("EXEC tl_SetStatus %1,%2,NULL,NULL,%3,%4")
            .arg(contact)
            .arg(statusSys)
            .arg(comment.isEmpty() ? QStringLiteral("NULL") : "'" + comment + "'")
            .arg(user);
    }
    const QString goIdle() const { return setStatus(6, QStringLiteral("User is idle")); }
    const QString comeBack() const { return setStatus(3, QString()); }

    void compareServer(int statusSys, const QString& comment) {
        const QString where = QStringLiteral(" FROM contact WHERE contactsys = ") + contact;
        QCOMPARE(f.query("SELECT statussys" + where).toInt(), statusSys);
        QCOMPARE(f.query("SELECT COALESCE(comment, '')" + where).toString(), comment);
    }

    // What another person does on another computer (bob, user 5002).
    void postAsBob(const QString& statement) {
        QString why;
        QVERIFY2(f.postAs(QStringLiteral("bob"), statement, &why), qPrintable(why));
    }

private slots:
    void initTestCase() {
        QVERIFY2(f.start(), qPrintable(f.server->failure()));
        auto fake = std::make_unique<FakeActivity>();
        activity = fake.get();
        modTLMouseActivity::SetSource(std::move(fake));
    }

    void cleanupTestCase() { modTLMouseActivity::SetSource(nullptr); }

    // Ann signed in and In, the watch on with 15 minutes, chat off, no tick due from the real
    // timers.
    void init() {
        f.reset();
        NetworkInterfaces::SetSource(&FakeNetwork::Wired); // the status poll runs
        CommandLine::SetArguments(QStringList{});
        QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        for (QTimer* timer :
             {tray().tmrMouseActivity, tray().tmrUpdateStatus, tray().tmrCheckNetwork})
            timer->stop();
        contact = QString::number(root().ActiveUser().ContactSys());
        user = QString::number(root().ActiveUser().UserSys());
        root().ActiveContact().UpdateContactStatus(root().ActiveUser().ContactSys(), 3, {}, {}, {});
        root().Settings().AutoDetectActivity = true;
        root().Settings().IdleTime = 15;
        root().Settings().EnableChat = false;
        root().Settings().ChatConnected = root().Settings().ChatConnecting = false;
        root().DataAccess().ConnectionEnabled = true;
        root().ActiveContact().NotesUnread = 0; // plain pictures in the tray
        activity->keyHeld = activity->pressed = false;
        watch().PrevPos = activity->position;
        watch().IdleMilliseconds = 0;
        f.boxes.clear();
    }

    // A run whose tray form loaded before anyone signed in has no idle watch.
    void theWatchStartsOnlyIfSomeoneIsSignedInWhenTheTrayFormLoads() {
        const auto reloadTray = [this] {
            Unload<frmTLMain>(); // signs out too, and takes the settings dialog along
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            f.pointAtGateway();
        };
        reloadTray();
        QVERIFY(!tray().tmrMouseActivity->isActive());
        QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        QVERIFY(!tray().tmrMouseActivity->isActive());
        reloadTray();
        watch().PrevPos = QPoint(9, 9);
        QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        QVERIFY(tray().tmrMouseActivity->isActive());
        QCOMPARE(tray().tmrMouseActivity->interval(), 1000);
        QCOMPARE(watch().PrevPos, QPoint(0, 0));
        root().ActiveUser().Logout();
        QVERIFY(tray().tmrMouseActivity->isActive()); // signing out doesn't stop it
        tray().tmrMouseActivity->stop();
    }

    void fifteenQuietMinutesMakeTheUserIdleAndASidewaysMoveBringsTheUserBack() {
        QCOMPARE(ticks(899), QStringList());
        QCOMPARE(ticks(1), QStringList{goIdle()});
        compareServer(6, QStringLiteral("User is idle"));
        QCOMPARE(root().ActiveStatus().StatusSys, 6);
        QCOMPARE(root().ActiveStatusRow().Comment, QStringLiteral("User is idle"));
        QCOMPARE(tray().TrayPictureIndex(), TrayDisplay::kUnavailable);
        QCOMPARE(watch().IdleMilliseconds, 0.0);

        // Keys hold the count back but don't bring anyone back.
        QCOMPARE(ticks(5, [this] { activity->pressed = true; }), QStringList());
        QCOMPARE(root().ActiveStatus().StatusSys, 6);
        QCOMPARE(moveSideways(), QStringList{comeBack()});
        compareServer(3, QString());
        QCOMPARE(root().ActiveStatusRow().Comment, QString());
        QCOMPARE(tray().TrayPictureIndex(), TrayDisplay::kIn);
        QVERIFY(f.boxes.isEmpty());
    }

    void idleTimeZeroGoesAtOnceAndComesBackAndGoesInOneTick() {
        root().Settings().IdleTime = 0;
        QCOMPARE(ticks(1), QStringList{goIdle()});
        QCOMPARE(moveSideways(), (QStringList{comeBack(), goIdle()}));
        compareServer(6, QStringLiteral("User is idle"));
    }

    void upAndDownOnlyIsNoMovement() {
        QCOMPARE(ticks(899, [this] { activity->position.ry() += 3; }), QStringList());
        QCOMPARE(ticks(1, [this] { activity->position.ry() -= 3; }), QStringList{goIdle()});
        QCOMPARE(ticks(1, [this] { activity->position.ry() += 40; }), QStringList());
        QCOMPARE(root().ActiveStatus().StatusSys, 6);
    }

    void aKeyHeldKeepsTheCountAtOneTick() {
        activity->keyHeld = true;
        QCOMPARE(ticks(2000), QStringList());
        QCOMPARE(watch().IdleMilliseconds, 1000.0);
        activity->keyHeld = false;
        QCOMPARE(ticks(898), QStringList());
        QCOMPARE(ticks(1), QStringList{goIdle()});
    }

    void anyOtherStatusIsLeftAloneWhileTheCountRunsAndResets() {
        root().ActiveContact().UpdateContactStatus(root().ActiveUser().ContactSys(), 8, {}, {}, {});
        QCOMPARE(ticks(899), QStringList());
        QCOMPARE(watch().IdleMilliseconds, 899000.0);
        QCOMPARE(ticks(1), QStringList());
        QCOMPARE(watch().IdleMilliseconds, 0.0);
        QCOMPARE(ticks(2700), QStringList());
        QCOMPARE(moveSideways(), QStringList());
        compareServer(8, QString());
    }

    void switchedOffNothingIsSent() {
        root().Settings().AutoDetectActivity = false;
        root().Settings().IdleTime = 0;
        QCOMPARE(ticks(3), QStringList());
        QCOMPARE(watch().IdleMilliseconds, 3000.0); // the count runs on regardless
        root().Settings().IdleTime = 1;
        QCOMPARE(ticks(60), QStringList());
        QCOMPARE(watch().IdleMilliseconds, 63000.0);
    }

    // The comment is the only mark, read as the status poll last brought it from the server.
    void onlyTheExactCommentFromAnywhereCountsAsIdle_data() {
        columns<QString, bool>("comment", "comesBack");
        row("set elsewhere, exact", "User is idle", true);
        row("lower case", "user is idle", false);
        row("another comment", "At the dentist", false);
    }
    void onlyTheExactCommentFromAnywhereCountsAsIdle() {
        auto [comment, comesBack] = fetch<QString, bool>("comment", "comesBack");
        postAsBob(
            QStringLiteral("EXEC tl_SetStatus %1,6,NULL,NULL,'%2',5002").arg(contact, comment));
        tray().tmrUpdateStatus_Timer();
        QCOMPARE(root().ActiveStatus().StatusSys, 6);
        QCOMPARE(root().ActiveStatusRow().Comment, comment);
        QCOMPARE(moveSideways(), comesBack ? QStringList{comeBack()} : QStringList());
        compareServer(comesBack ? 3 : 6, comesBack ? QString() : comment);
    }

    void aReturnWhileTheServerIsAwayIsLostUntilTheNextMove() {
        root().Settings().IdleTime = 1;
        QCOMPARE(ticks(60), QStringList{goIdle()});
        root().DataAccess().ConnectionEnabled = false;
        QCOMPARE(ticks(30), QStringList());
        QCOMPARE(moveSideways(), QStringList());
        QCOMPARE(watch().IdleMilliseconds, 0.0);
        QCOMPARE(root().ActiveStatusRow().Comment, QStringLiteral("User is idle"));
        root().DataAccess().ConnectionEnabled = true;
        QCOMPARE(ticks(1), QStringList()); // still: nothing
        QCOMPARE(moveSideways(), QStringList{comeBack()});
    }

    void signedOutTheWatchOnlyCounts() {
        root().ActiveUser().Logout();
        root().Settings().IdleTime = 0;
        QCOMPARE(ticks(5), QStringList());
        QCOMPARE(moveSideways(), QStringList());
        QCOMPARE(watch().IdleMilliseconds, 0.0);
    }

    void aChangeMadeElsewhereReachesTrayAndStatusBarInOneTick() {
        postAsBob(
            QStringLiteral("EXEC tl_SetStatus %1,8,NULL,NULL,'Gone to lunch',5002").arg(contact));
        postAsBob(QStringLiteral("EXEC tl_AddContactNote %1,'Call me back',5002,0").arg(contact));
        const int unread = f.query("SELECT COUNT(*) FROM note WHERE contactsys = " + contact +
                                   " AND dateread IS NULL AND deleted = 0")
                               .toInt();
        QVERIFY(unread > 0);
        root().ActiveContact().NotesUnread = 0;
        QCOMPARE(tick(), pollStatements());
        QCOMPARE(root().ActiveStatus().StatusSys, 8);
        QCOMPARE(root().ActiveStatus().StatusText, QStringLiteral("Out"));
        QCOMPARE(root().ActiveStatusRow().Comment, QStringLiteral("Gone to lunch"));
        QCOMPARE(root().ActiveContact().NotesUnread, unread);
        QCOMPARE(tray().TrayPictureIndex(), TrayDisplay::kOtherWithNotes);
        QVERIFY(tray().trayIcon->toolTip().endsWith(QStringLiteral("Status set to Out")));
        QCOMPARE(Form<frmTLView>().StatusBarBottom->Panel(QStringLiteral("status"))->text(),
                 QStringLiteral("Status: Out"));
        QVERIFY(f.boxes.isEmpty());
    }

    // Changes made here aren't sent again: the server's word simply stands.
    void theServerOverwritesTheLocalStatus() {
        root().ActiveStatus().StatusSys = 6;
        root().ActiveStatus().StatusText = QStringLiteral("Unavailable");
        root().ActiveStatusRow().Comment = QStringLiteral("local only");
        QCOMPARE(tick(), pollStatements());
        QCOMPARE(root().ActiveStatus().StatusSys,
                 f.query("SELECT statussys FROM contact WHERE contactsys = " + contact).toInt());
        QCOMPARE(root().ActiveStatusRow().Comment,
                 f.query("SELECT COALESCE(comment, '') FROM contact WHERE contactsys = " + contact)
                     .toString());
    }

    void theChatStateGoesToTheServerAtEveryTick_data() {
        columns<bool, bool, bool, QString>("enabled", "connected", "connecting", "sent");
        row("chat off", false, false, false, ", 0");
        row("online", true, true, false, ", 1");
        row("still connecting", true, true, true, ", 0");
    }
    void theChatStateGoesToTheServerAtEveryTick() {
        auto [enabled, connected, connecting, sent] =
            fetch<bool, bool, bool, QString>("enabled", "connected", "connecting", "sent");
        auto& settings = root().Settings();
        settings.EnableChat = enabled;
        settings.ChatConnected = connected;
        settings.ChatConnecting = connecting;
        QCOMPARE(tick(), pollStatements(qPrintable(sent)));
        QCOMPARE(f.query("SELECT chatstatus FROM contact WHERE contactsys = " + contact).toInt(),
                 sent == ", 1" ? 1 : 0);
    }

    void aContactWithoutNumbersOnlySendsTheChatState() {
        root().ActiveContact().UserSys = 0;
        QCOMPARE(tick(), QStringList{pollStatements().last()});
    }

    void nothingIsSentSignedOutOrWithoutANetwork() {
        root().ActiveUser().Logout();
        QCOMPARE(tick(), QStringList());
        QCOMPARE(tray().trayIcon->toolTip(), QStringLiteral("Tavlo - Not Logged In"));
        QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        NetworkInterfaces::SetSource(&FakeNetwork::OnlyLoopback);
        QCOMPARE(tick(), QStringList());
        f.gateway->clear();
        tray().UpdateNoteCountFromDatabase();
        QCOMPARE(f.gateway->statements(), QStringList());
        NetworkInterfaces::SetSource(&FakeNetwork::Wired);
        QCOMPARE(tick(), pollStatements());
    }

    void theIgnoreNetworkSwitchStopsThePollForTheWholeRun() {
        CommandLine::SetArguments(QStringList{QStringLiteral("/IgnoreNetwork")});
        QCOMPARE(tick(), QStringList());
        f.gateway->clear();
        tray().UpdateNoteCountFromDatabase();
        QCOMPARE(f.gateway->statements(), QStringList());
    }

    void anEmptyStatusAnswerIsReportedAndTheProgramGoesOn() {
        root().ActiveContact().ContactSys = 999999;
        root().ActiveStatus().StatusSys = 3;
        tick();
        QCOMPARE(root().ActiveStatus().StatusSys, 3);
        QVERIFY(IsLoaded<frmTLMain>());
        QCOMPARE(f.boxes.size(), 1);
        QCOMPARE(f.boxes.first().title,
                 QStringLiteral("Anomaly Report ::frmTLMain:tmrUpdateStatus"));
        QVERIFY(f.boxes.first().text.contains(QStringLiteral("current record")));
    }

    // Last: the server goes away for good. The gateway's message comes once, then the tray
    // icon goes and the program's event loop ends.
    void aServerGoneDuringAPollEndsTheProgram() {
        root().Settings().SetWebAddress(f.server->baseUrl());
        QPointer<frmTLMain> form = &tray();
        f.server.reset();
        QTimer::singleShot(0, form, &frmTLMain::tmrUpdateStatus_Timer);
        QTimer::singleShot(60000, [] { QCoreApplication::exit(99); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(f.boxes.size(), 1);
        QVERIFY2(f.boxes.first().text.startsWith(
                     QStringLiteral("Tavlo is unable to contact the server.")),
                 qPrintable(f.boxes.first().text));
        QVERIFY(!IsLoaded<frmTLMain>());
        QVERIFY(!form || !form->trayIcon->isVisible());
        QVERIFY(!root().ActiveUser().ValidUser());
    }
};

TAVLO_SIGNED_IN_TEST_MAIN(TestTrayTimers)
#include "tst_traytimers.moc"
