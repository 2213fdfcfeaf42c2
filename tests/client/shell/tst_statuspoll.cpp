#include "SignInFixture.h"
#include "FakeNetwork.h"
#include "Rows.h"
#include "board/frmTLView.h"
#include "platform/CommandLine.h"
#include "shell/TrayDisplay.h"
#include "shell/frmTLMain.h"
#include <QApplication>

// The status poll and the network watch of the tray form against a real server: the server is
// the master of the signed-in user's status, and a server gone during a poll ends the program.
class TestStatusPoll : public QObject {
    Q_OBJECT
    SignInFixture f;
    QString contact;
    QString user;

    auto& root() { return TLMain(); }
    frmTLMain& tray() { return Form<frmTLMain>(); }
    QString panel(const char* key) {
        return Form<frmTLView>().StatusBarBottom->Panel(QString::fromLatin1(key))->text();
    }

    QStringList tick() {
        f.gateway->clear();
        tray().tmrUpdateStatus_Timer();
        return f.gateway->statements();
    }
    QStringList pollStatements(const char* chat = ", 0") const {
        return {QStringLiteral("EXEC tl_GetContactNotesUnread  ") + contact,
                QStringLiteral("EXEC tl_GetContactStatus ") + contact,
                QStringLiteral("EXEC tl_UpdateChatStatus ") + contact + QString::fromLatin1(chat)};
    }

    void postAsBob(const QString& statement) {
        QString why;
        QVERIFY2(f.postAs(QStringLiteral("bob"), statement, &why), qPrintable(why));
    }

private slots:
    void initTestCase() { QVERIFY2(f.start(), qPrintable(f.server->failure())); }

    void init() {
        f.reset();
        NetworkInterfaces::SetSource(&FakeNetwork::Wired);
        CommandLine::SetArguments(QStringList{});
        QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        for (QTimer* timer :
             {tray().tmrMouseActivity, tray().tmrUpdateStatus, tray().tmrCheckNetwork})
            timer->stop();
        contact = QString::number(root().ActiveUser().ContactSys());
        user = QString::number(root().ActiveUser().UserSys());
        root().Settings().EnableChat = false;
        root().Settings().ChatConnected = root().Settings().ChatConnecting = false;
        f.boxes.clear();
    }

    void bothTimersRunFromTheTrayFormsLoad() {
        Unload<frmTLMain>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(tray().tmrCheckNetwork->isActive());
        QCOMPARE(tray().tmrCheckNetwork->interval(), 1000);
        QVERIFY(tray().tmrUpdateStatus->isActive());
        QCOMPARE(tray().tmrUpdateStatus->interval(), 30000);
    }

    void aChangeMadeElsewhereReachesTrayAndStatusBarInOneTick() {
        const QString bob = f.query("SELECT usersys FROM users WHERE username = 'bob'").toString();
        postAsBob(QStringLiteral("EXEC tl_SetStatus %1,8,NULL,NULL,'Gone to lunch',%2")
                      .arg(contact, bob));
        postAsBob(
            QStringLiteral("EXEC tl_AddContactNote %1,'Call me back',%2,0").arg(contact, bob));
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
        QCOMPARE(panel("status"), QStringLiteral("Status: Out"));
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
        QFETCH(bool, enabled);
        QFETCH(bool, connected);
        QFETCH(bool, connecting);
        QFETCH(QString, sent);
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

TAVLO_SIGNED_IN_TEST_MAIN(TestStatusPoll)
#include "tst_statuspoll.moc"
