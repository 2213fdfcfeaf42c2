#include "SignInFixture.h"
#include "FakeNetwork.h"
#include "Rows.h"
#include "platform/ActivitySource.h"
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

// The idle watch on the signed-in user against a real server, driven tick by tick.
class TestIdleWatch : public QObject {
    Q_OBJECT
    SignInFixture f;
    FakeActivity* activity = nullptr;
    QString contact;
    QString user;

    auto& root() { return TLMain(); }
    auto& watch() { return modTLMouseActivity::Current(); }

    // Ticks as the timer would; answers what went to the server meanwhile.
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

private slots:
    void initTestCase() {
        QVERIFY2(f.start(), qPrintable(f.server->failure()));
        auto fake = std::make_unique<FakeActivity>();
        activity = fake.get();
        modTLMouseActivity::SetSource(std::move(fake));
    }

    // Ann signed in and In, the watch on with 15 minutes, no tick due from the real timers.
    void init() {
        f.reset();
        NetworkInterfaces::SetSource(&FakeNetwork::Wired); // the status poll runs
        QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        auto& tray = Form<frmTLMain>();
        for (QTimer* timer : {tray.tmrMouseActivity, tray.tmrUpdateStatus, tray.tmrCheckNetwork})
            timer->stop();
        contact = QString::number(root().ActiveUser().ContactSys());
        user = QString::number(root().ActiveUser().UserSys());
        root().ActiveContact().UpdateContactStatus(root().ActiveUser().ContactSys(), 3, {}, {}, {});
        root().Settings().AutoDetectActivity = true;
        root().Settings().IdleTime = 15;
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
        QVERIFY(!Form<frmTLMain>().tmrMouseActivity->isActive());
        QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        QVERIFY(!Form<frmTLMain>().tmrMouseActivity->isActive());
        reloadTray();
        watch().PrevPos = QPoint(9, 9);
        QVERIFY(root().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        QVERIFY(Form<frmTLMain>().tmrMouseActivity->isActive());
        QCOMPARE(Form<frmTLMain>().tmrMouseActivity->interval(), 1000);
        QCOMPARE(watch().PrevPos, QPoint(0, 0));
        root().ActiveUser().Logout();
        QVERIFY(Form<frmTLMain>().tmrMouseActivity->isActive()); // signing out doesn't stop it
        Form<frmTLMain>().tmrMouseActivity->stop();
    }

    void fifteenQuietMinutesMakeTheUserIdleAndASidewaysMoveBringsTheUserBack() {
        QCOMPARE(ticks(899), QStringList());
        QCOMPARE(ticks(1), QStringList{goIdle()});
        compareServer(6, QStringLiteral("User is idle"));
        QCOMPARE(root().ActiveStatus().StatusSys, 6);
        QCOMPARE(root().ActiveStatusRow().Comment, QStringLiteral("User is idle"));
        QCOMPARE(Form<frmTLMain>().TrayPictureIndex(), TrayDisplay::kUnavailable);
        QCOMPARE(watch().IdleMilliseconds, 0.0);

        // Keys hold the count back but don't bring anyone back.
        QCOMPARE(ticks(5, [this] { activity->pressed = true; }), QStringList());
        QCOMPARE(root().ActiveStatus().StatusSys, 6);
        QCOMPARE(moveSideways(), QStringList{comeBack()});
        compareServer(3, QString());
        QCOMPARE(root().ActiveStatusRow().Comment, QString());
        QCOMPARE(Form<frmTLMain>().TrayPictureIndex(), TrayDisplay::kIn);
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
        QFETCH(QString, comment);
        QFETCH(bool, comesBack);
        const QString other = QString::number(f.query("SELECT usersys FROM users WHERE "
                                                      "username = 'bob'")
                                                  .toInt());
        f.gateway->clear();
        QVERIFY(f.postAs(QStringLiteral("bob"),
                         QStringLiteral("EXEC tl_SetStatus %1,6,NULL,NULL,'%2',%3")
                             .arg(contact, comment, other)));
        Form<frmTLMain>().tmrUpdateStatus_Timer();
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

    void cleanupTestCase() { modTLMouseActivity::SetSource(nullptr); }
};

TAVLO_SIGNED_IN_TEST_MAIN(TestIdleWatch)
#include "tst_idlewatch.moc"
