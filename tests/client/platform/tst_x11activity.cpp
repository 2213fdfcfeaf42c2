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
    void moveTo(int x, int y) {
        xdotool({QStringLiteral("mousemove"), QString::number(x), QString::number(y)});
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
    bool activeWithin(int ms) { return lookUntil(true, ms); }
    bool quietWithin(int ms) { return lookUntil(false, ms); }

    // Lets the raw events that are on their way arrive, then forgets them.
    void settle() {
        QTest::qWait(200);
        source->AnyKeyActive();
    }

private slots:
    void initTestCase() {
        source = X11ActivitySource::Create();
        QVERIFY2(source, "no X11 connection with XInput 2");
        moveTo(100, 100);
        QTRY_COMPARE(source->CursorPos(), QPoint(100, 100));
    }

    void init() { settle(); }

    void sidewaysMotionChangesX() {
        moveTo(340, 100);
        QTRY_COMPARE(source->CursorPos(), QPoint(340, 100));
    }

    void upAndDownMotionLeavesX() {
        const int x = source->CursorPos().x();
        moveTo(x, 420);
        QTRY_COMPARE(source->CursorPos().y(), 420);
        QCOMPARE(source->CursorPos().x(), x);
    }

    void aTapBetweenTwoLooksIsSeenOnce_data() {
        columns<QStringList>("tap");
        row("key", QStringList{"key", "a"});
        row("click", QStringList{"click", "1"});
    }
    void aTapBetweenTwoLooksIsSeenOnce() {
        QFETCH(QStringList, tap);
        xdotool(tap);
        QVERIFY(activeWithin(5000));
        QVERIFY(!source->AnyKeyActive());
    }

    void aKeyOrButtonHeldIsSeenAtEveryLook_data() {
        columns<QStringList, QStringList>("press", "release");
        row("key", QStringList{"keydown", "shift"}, QStringList{"keyup", "shift"});
        row("button", QStringList{"mousedown", "3"}, QStringList{"mouseup", "3"});
    }
    void aKeyOrButtonHeldIsSeenAtEveryLook() {
        auto [press, release] = fetch<QStringList, QStringList>("press", "release");
        xdotool(press);
        QVERIFY(activeWithin(5000));
        for (int look = 0; look < 3; ++look) {
            QTest::qWait(150);
            QVERIFY(source->AnyKeyActive());
        }
        xdotool(release);
        QVERIFY(quietWithin(5000));
    }

    // Pointer motion and the wheel are no key, and nothing happening is nothing.
    void noFalseActivity() {
        moveTo(200, 200);
        QTRY_COMPARE(source->CursorPos(), QPoint(200, 200));
        xdotool({QStringLiteral("click"), QStringLiteral("4")});
        QTest::qWait(300);
        QVERIFY(!source->AnyKeyActive());
        QTest::qWait(1200);
        QVERIFY(!source->AnyKeyActive());
        QCOMPARE(source->CursorPos(), QPoint(200, 200));
    }
};

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    TestX11Activity test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_x11activity.moc"
