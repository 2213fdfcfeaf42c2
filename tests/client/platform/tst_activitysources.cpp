#include "platform/DesktopIdleActivitySource.h"
#include "platform/OwnWindowsActivitySource.h"
#include <QApplication>
#include <QDBusConnection>
#include <QLineEdit>
#include <QProcess>
#include <QThread>
#include <QtTest>
#include <atomic>

// Idle monitors as GNOME and KDE offer them on the session bus, answering from their own
// thread as a desktop would from its own process.
class FakeGnomeMonitor : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Mutter.IdleMonitor")
public:
    std::atomic<qulonglong> idle{600000};
public slots:
    qulonglong GetIdletime() { return idle; }
};

class FakeScreenSaver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    std::atomic<uint> idle{600000};
public slots:
    uint GetSessionIdleTime() { return idle; }
};

// The activity sources without X11: the one that only hears "some input came", as on a Wayland
// desktop, and the fallback, where only what reaches the program's own windows counts.
class TestActivitySources : public QObject {
    Q_OBJECT
    QProcess bus;
    QThread desktop;
    FakeGnomeMonitor gnome;
    FakeScreenSaver kde;

    QDBusConnection desktopBus() { return QDBusConnection(QStringLiteral("desktop")); }

    void offer(QObject* monitor, const QString& service, const QString& path) {
        QVERIFY(desktopBus().registerObject(path, monitor, QDBusConnection::ExportAllSlots));
        QVERIFY(desktopBus().registerService(service));
    }
    void withdraw(const QString& service, const QString& path) {
        desktopBus().unregisterObject(path);
        desktopBus().unregisterService(service);
    }

    QLineEdit window;
    std::unique_ptr<OwnWindowsActivitySource> own;

private slots:
    void initTestCase() {
        bus.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--session"), QStringLiteral("--nofork"),
                   QStringLiteral("--print-address")});
        QVERIFY(bus.waitForReadyRead(10000));
        const QString address = QString::fromUtf8(bus.readLine()).trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
        QVERIFY(QDBusConnection::connectToBus(address, QStringLiteral("desktop")).isConnected());
        gnome.moveToThread(&desktop);
        kde.moveToThread(&desktop);
        desktop.start();
        window.setGeometry(50, 60, 200, 40);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        own = std::make_unique<OwnWindowsActivitySource>();
    }

    void cleanupTestCase() {
        desktop.quit();
        desktop.wait();
        gnome.moveToThread(thread());
        kde.moveToThread(thread());
        QDBusConnection::disconnectFromBus(QStringLiteral("desktop"));
        bus.kill();
        bus.waitForFinished();
    }

    void onlyInputAfterThePreviousLookCountsAsMovement() {
        std::optional<std::uint64_t> idle = 600000;
        DesktopIdleActivitySource source([&] { return idle; });
        const QPoint start = source.CursorPos(); // the first look starts the clock
        QTest::qWait(120);
        idle = 0; // input just now
        QCOMPARE(source.CursorPos().x(), start.x() + 1);
        QTest::qWait(120);
        idle = 300; // the same input, seen again: older than this look's interval
        QCOMPARE(source.CursorPos().x(), start.x() + 1);
        QTest::qWait(120);
        idle = std::nullopt; // the monitor went away: no input
        QCOMPARE(source.CursorPos().x(), start.x() + 1);
        QVERIFY(!source.AnyKeyActive());
    }

    void noMonitorOnTheBusNoSource() { QVERIFY(!DesktopIdleActivitySource::Create()); }

    void gnomesMonitorComesFirst() {
        offer(&gnome, QStringLiteral("org.gnome.Mutter.IdleMonitor"),
              QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core"));
        offer(&kde, QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/ScreenSaver"));
        auto source = DesktopIdleActivitySource::Create();
        QVERIFY(source);
        QCOMPARE(source->Monitor(), QStringLiteral("org.gnome.Mutter.IdleMonitor"));
        const int x = source->CursorPos().x();
        QTest::qWait(150);
        QCOMPARE(source->CursorPos().x(), x); // quiet for ten minutes
        gnome.idle = 20;
        QTest::qWait(150);
        QCOMPARE(source->CursorPos().x(), x + 1);
        withdraw(QStringLiteral("org.gnome.Mutter.IdleMonitor"),
                 QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core"));
    }

    void theScreenSaversAnswerServesElsewhere() {
        auto source = DesktopIdleActivitySource::Create();
        QVERIFY(source);
        QCOMPARE(source->Monitor(), QStringLiteral("org.freedesktop.ScreenSaver"));
        const int x = source->CursorPos().x();
        kde.idle = 10;
        QTest::qWait(150);
        QCOMPARE(source->CursorPos().x(), x + 1);
        withdraw(QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/ScreenSaver"));
    }

    void motionOverAWindowGivesThePointerOnTheScreen() {
        QTest::mouseMove(&window, QPoint(30, 10));
        QTRY_COMPARE(own->CursorPos(), window.mapToGlobal(QPoint(30, 10)));
        QVERIFY(!own->AnyKeyActive());
    }

    void aKeyIsSeenOnceAndAHeldKeyUntilItsRelease() {
        QTest::keyClick(&window, Qt::Key_A);
        QVERIFY(own->AnyKeyActive());
        QVERIFY(!own->AnyKeyActive());
        QTest::keyPress(&window, Qt::Key_Shift);
        QVERIFY(own->AnyKeyActive());
        QVERIFY(own->AnyKeyActive());
        QTest::keyRelease(&window, Qt::Key_Shift);
        QVERIFY(!own->AnyKeyActive());
    }

    void aClickIsSeen() {
        QTest::mouseClick(&window, Qt::LeftButton);
        QVERIFY(own->AnyKeyActive());
        QVERIFY(!own->AnyKeyActive());
    }

    void leavingTheProgramForgetsKeysHeld() {
        QTest::keyPress(&window, Qt::Key_Control);
        QEvent away(QEvent::ApplicationDeactivate);
        QCoreApplication::sendEvent(qApp, &away);
        own->AnyKeyActive();
        QVERIFY(!own->AnyKeyActive());
    }
};

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    TestActivitySources test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_activitysources.moc"
