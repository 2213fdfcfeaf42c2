#include "FreshUserFolders.h"
#include "Rows.h"
#include "platform/linux/X11ActivitySource.h"
#include <QGuiApplication>
#include <QProcess>
#include <QtTest>

// The X11 activity source on a real X server (Xvfb), driven from outside the program by
// xdotool, as a user's own input would come: no window of this program has the focus.
class TestX11Activity : public QObject {
    Q_OBJECT
    std::unique_ptr<X11ActivitySource> source;

    void xdotool(const QStringList& arguments) {
        QCOMPARE(QProcess::execute(QStringLiteral("xdotool"), arguments), 0);
    }
    // Each look clears the record of presses, so it must be made once per check (a QTRY macro
    // would look again after it succeeded).
    bool lookUntil(bool active, int ms) {
        QDeadlineTimer deadline(ms);
        do {
            if (source->AnyKeyActive() == active)
                return true;
            QTest::qWait(20);
        } while (!deadline.hasExpired());
        return false;
    }

private slots:
    void initTestCase() {
        source = X11ActivitySource::Create();
        QVERIFY2(source, "no X11 connection with XInput 2");
        xdotool({QStringLiteral("mousemove"), QStringLiteral("100"), QStringLiteral("100")});
        QTRY_COMPARE(source->CursorPos(), QPoint(100, 100));
    }

    // Lets the raw events that are on their way arrive, then forgets them.
    void init() {
        QTest::qWait(200);
        source->AnyKeyActive();
    }

    void pressesAreSeen_data() {
        columns<QStringList, QStringList>("press", "release");
        row("key tapped", QStringList{"key", "a"}, QStringList{});
        row("click", QStringList{"click", "1"}, QStringList{});
        row("key held", QStringList{"keydown", "shift"}, QStringList{"keyup", "shift"});
        row("button held", QStringList{"mousedown", "3"}, QStringList{"mouseup", "3"});
    }
    // A tap between two looks is seen at the first of them only; a key or button held is seen at
    // every look until its release.
    void pressesAreSeen() {
        auto [press, release] = fetch<QStringList, QStringList>("press", "release");
        xdotool(press);
        QVERIFY(lookUntil(true, 5000));
        for (int look = 0; look < 3; ++look) {
            QTest::qWait(150);
            QCOMPARE(source->AnyKeyActive(), !release.isEmpty());
        }
        if (!release.isEmpty()) {
            xdotool(release);
            QVERIFY(lookUntil(false, 5000));
        }
    }

    // The pointer is where it was moved to on the screen; motion and the wheel are no key, and
    // nothing happening is nothing.
    void motionIsNoActivity() {
        xdotool({QStringLiteral("mousemove"), QStringLiteral("340"), QStringLiteral("420")});
        QTRY_COMPARE(source->CursorPos(), QPoint(340, 420));
        xdotool({QStringLiteral("click"), QStringLiteral("4")});
        QTest::qWait(300);
        QVERIFY(!source->AnyKeyActive());
        QTest::qWait(1200);
        QVERIFY(!source->AnyKeyActive());
        QCOMPARE(source->CursorPos(), QPoint(340, 420));
    }
};

TAVLO_TEST_MAIN_WITH(QGuiApplication, TestX11Activity)
#include "tst_x11activity.moc"
