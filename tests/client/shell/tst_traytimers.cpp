#include "FakeNetwork.h"
#include "Rows.h"
#include "SignInFixture.h"
#include "board/frmTLView.h"
#include "platform/ActivitySource.h"
#include "platform/CommandLine.h"
#include "shell/TrayDisplay.h"
#include "shell/frmTLMain.h"
#include "shell/modTLMain.h"
#include "shell/modTLMouseActivity.h"

namespace {

// Activity as a test sets it: a pointer position, a key held, a press since the last look.
struct FakeActivity : ActivitySource {
    QPoint position{500, 300};
    bool keyHeld = false;
    bool pressed = false;
    QPoint CursorPos() override { return position; }
    bool AnyKeyActive() override { return std::exchange(pressed, false) || keyHeld; }
};

// What ann (contact 1001, user 5001) sends going idle and coming back.
const QString kIdle = QStringLiteral("EXEC tl_SetStatus 1001,6,NULL,NULL,'User is idle',5001");
const QString kBack = QStringLiteral("EXEC tl_SetStatus 1001,3,NULL,NULL,NULL,5001");

} // namespace

// The tray form's timers against a real server, driven tick by tick: the idle watch on the
// signed-in user, the status poll (the server is the master of the user's status) and the
// network watch; a server gone during a poll ends the program.
class TestTrayTimers : public QObject {
    Q_OBJECT
    SignInFixture f;
    FakeActivity* activity = nullptr;

    auto& root() { return TLMain(); }
    auto& watch() { return modTLMouseActivity::Current(); }
    frmTLMain& tray() { return Form<frmTLMain>(); }

    // Plays an idle-watch script: steps apart by commas, each "N how" idle ticks as the timer
    // would (how: still, key pressed at each tick, held through them, side or vert moves) with
    // what they sent after a colon (idle, back), or a change between ticks (offline, online,
    // signout, manual, or idle set elsewhere with the exact comment or in lower case).
    void play(const QString& script) {
        const QMap<QString, std::function<void()>> does = {
            {"offline", [this] { root().DataAccess().ConnectionEnabled = false; }},
            {"online", [this] { root().DataAccess().ConnectionEnabled = true; }},
            {"signout", [this] { root().ActiveUser().Logout(); }},
            {"manual", [this] { root().Settings().AutoDetectActivity = false; }},
            {"elsewhere", [this] { idleElsewhere("User is idle"); }},
            {"elsewhere-lower", [this] { idleElsewhere("user is idle"); }},
            {"still", [] {}},
            {"key", [this] { activity->pressed = true; }},
            {"held", [this] { activity->keyHeld = true; }},
            {"side", [this] { activity->position.rx() += 7; }},
            {"vert", [this] { activity->position.ry() += 3; }}};
        for (const QString& step : script.split(u',')) {
            const QStringList how = step.section(u':', 0, 0).split(u' ', Qt::SkipEmptyParts);
            if (how.size() == 1) {
                does[how[0]]();
                continue;
            }
            QStringList expected;
            for (const QString& sent : step.section(u':', 1).split(u' ', Qt::SkipEmptyParts))
                expected << (sent == QStringLiteral("idle") ? kIdle : kBack);
            const QStringList got = f.sentBy([&] {
                for (int i = 0; i < how[0].toInt(); ++i) {
                    does[how[1]]();
                    modTLMouseActivity::Tick(1000);
                }
            });
            activity->keyHeld = false;
            QVERIFY2(got == expected, qPrintable(step + QStringLiteral(" sent: ") + got.join('|')));
        }
    }

    QStringList tick() {
        return f.sentBy([this] { tray().tmrUpdateStatus_Timer(); });
    }
    static QStringList polled(int chat = 0) {
        return {QStringLiteral("EXEC tl_GetContactNotesUnread  1001"),
                QStringLiteral("EXEC tl_GetContactStatus 1001"),
                QStringLiteral("EXEC tl_UpdateChatStatus 1001, %1").arg(chat)};
    }

    QVariant own(const char* column) const {
        return f.query(
            QStringLiteral("SELECT %1 FROM contact WHERE contactsys = 1001").arg(column));
    }

    // What another person does on another computer (bob, user 5002).
    void postAsBob(const QString& statement) {
        QString why;
        QVERIFY2(f.postAs(QStringLiteral("bob"), statement, &why), qPrintable(why));
    }
    // Bob marks ann idle, as her other computer would; the poll brings it here.
    void idleElsewhere(const char* comment) {
        postAsBob(QStringLiteral("EXEC tl_SetStatus 1001,6,NULL,NULL,'%1',5002").arg(comment));
        tray().tmrUpdateStatus_Timer();
        root().ActiveContact().NotesUnread = 0; // plain pictures in the tray
        modTLMain::BuildMenuItems();
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
        root().ActiveContact().UpdateContactStatus(root().ActiveUser().ContactSys(), 3, {}, {}, {});
        root().Settings().AutoDetectActivity = true;
        root().Settings().AutoStatusIn = false; // signing out leaves the status as it is
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
        for (bool signedIn : {false, true}) {
            Unload<frmTLMain>(); // signs out too, and takes the settings dialog along
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            f.pointAtGateway();
            if (!signedIn)
                tray(); // loads before anyone signs in
            watch().PrevPos = QPoint(9, 9);
            QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
            QCOMPARE(tray().tmrMouseActivity->isActive(), signedIn);
        }
        QCOMPARE(watch().PrevPos, QPoint(0, 0));
        root().ActiveUser().Logout();
        QVERIFY(tray().tmrMouseActivity->isActive()); // signing out doesn't stop it
        tray().tmrMouseActivity->stop();
    }

    // The idle watch end to end: what each row's ticks sent, then the status on both sides,
    // the tray's picture and the count left.
    void idleWatch_data() {
        columns<int, int, QString, int, int>("minutes", "status", "script", "ends", "seconds");
        row("idle, keys, back", 15, 3, "899 still, 1 still: idle, 5 key, 1 side: back", 3, 0);
        row("idle time zero", 0, 3, "1 still: idle, 1 side: back idle", 6, 0);
        row("up and down is no move", 15, 3, "899 vert, 1 vert: idle, 1 vert", 6, 1);
        row("a held key counts one tick", 15, 3, "2000 held, 898 still, 1 still: idle", 6, 0);
        // Only In goes idle; the count restarts all the same.
        row("another status stays", 15, 8, "1 side, 905 still", 8, 5);
        row("switched off, the count runs", 0, 3, "manual, 3 still", 3, 3);
        row("lost offline", 1, 3, "60 still: idle, offline, 1 side, online, 1 side: back", 3, 0);
        row("signed out, the count runs", 0, 3, "signout, 5 still", 3, 5);
        // The comment is the only mark, as the status poll last brought it from the server.
        row("idle set elsewhere", 15, 3, "elsewhere, 1 side: back", 3, 0);
        row("only the exact comment", 15, 3, "elsewhere-lower, 1 side", 6, 0);
    }
    void idleWatch() {
        auto [minutes, status, script, ends, seconds] =
            fetch<int, int, QString, int, int>("minutes", "status", "script", "ends", "seconds");
        root().Settings().IdleTime = minutes;
        root().ActiveStatus().StatusSys = status;
        root().ActiveContact().UpdateContactStatus(root().ActiveUser().ContactSys(), status, {}, {},
                                                   {});
        play(script);
        QCOMPARE(watch().IdleMilliseconds, seconds * 1000.0);
        QCOMPARE(own("statussys").toInt(), ends);
        QCOMPARE(own("LOWER(COALESCE(comment, ''))").toString(), ends == 6 ? "user is idle" : "");
        QCOMPARE(root().ActiveStatus().StatusSys, ends);
        const QMap<int, int> picture = {
            {3, TrayDisplay::kIn}, {6, TrayDisplay::kUnavailable}, {8, TrayDisplay::kOther}};
        if (root().ActiveUser().ValidUser())
            QCOMPARE(tray().TrayPictureIndex(), picture[ends]);
        QVERIFY(f.boxes.isEmpty());
    }

    // The server is the master: what was changed elsewhere, and over what was changed here
    // without being sent, reaches the tray and the status bar in one tick.
    void aChangeMadeElsewhereReachesTrayAndStatusBarInOneTick() {
        postAsBob(QStringLiteral("EXEC tl_SetStatus 1001,8,NULL,NULL,'Gone to lunch',5002"));
        postAsBob(QStringLiteral("EXEC tl_AddContactNote 1001,'Call me back',5002,0"));
        root().ActiveStatus().StatusSys = 6;
        root().ActiveStatusRow().Comment = QStringLiteral("local only");
        QCOMPARE(tick(), polled());
        QCOMPARE(root().ActiveStatus().StatusSys, 8);
        QCOMPARE(root().ActiveStatusRow().Comment, QStringLiteral("Gone to lunch"));
        QCOMPARE(root().ActiveContact().NotesUnread, 3); // the demo's two and bob's
        QCOMPARE(tray().TrayPictureIndex(), TrayDisplay::kOtherWithNotes);
        QVERIFY(tray().trayIcon->toolTip().endsWith(QStringLiteral("Status set to Out")));
        QCOMPARE(Form<frmTLView>().StatusBarBottom->Panel(QStringLiteral("status"))->text(),
                 QStringLiteral("Status: Out"));
        QVERIFY(f.boxes.isEmpty());
    }

    // Signed out, off the network or told to ignore it, neither the poll nor the note count asks.
    // Otherwise each tick ends with the chat state, online only once connecting is over.
    void whatEachTickSends() {
        const auto silent = [this] {
            QCOMPARE(tick(), QStringList());
            QCOMPARE(f.sentBy([this] { tray().UpdateNoteCountFromDatabase(); }), QStringList());
        };
        root().ActiveUser().Logout();
        silent();
        QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        NetworkInterfaces::SetSource(&FakeNetwork::OnlyLoopback);
        silent();
        NetworkInterfaces::SetSource(&FakeNetwork::Wired);
        QCOMPARE(tick(), polled(0));
        root().Settings().EnableChat = root().Settings().ChatConnected = true;
        QCOMPARE(tick(), polled(1));
        root().Settings().ChatConnecting = true;
        QCOMPARE(tick(), polled(0));
        CommandLine::SetArguments(QStringList{QStringLiteral("/IgnoreNetwork")});
        silent();
    }

    void anEmptyStatusAnswerIsReportedAndTheProgramGoesOn() {
        root().ActiveContact().ContactSys = 999999;
        root().ActiveStatus().StatusSys = 3;
        tick();
        QCOMPARE(root().ActiveStatus().StatusSys, 3);
        QVERIFY(IsLoaded<frmTLMain>());
        QCOMPARE(f.boxes.size(), 1);
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
        QVERIFY(f.boxes.first().text.startsWith(
            QStringLiteral("Tavlo is unable to contact the server.")));
        QVERIFY(!IsLoaded<frmTLMain>());
        QVERIFY(!form || !form->trayIcon->isVisible());
        QVERIFY(!root().ActiveUser().ValidUser());
    }
};

TAVLO_SIGNED_IN_TEST_MAIN(TestTrayTimers)
#include "tst_traytimers.moc"
