#include "FreshUserFolders.h"
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

    // GNOME's monitor is asked when both are on the bus, the screen saver's when it is alone, and
    // with neither there is no source.
    void theDesktopsMonitorIsFound() {
        QVERIFY(!DesktopIdleActivitySource::Create());
        offer(&gnome, QStringLiteral("org.gnome.Mutter.IdleMonitor"),
              QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core"));
        offer(&kde, QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/ScreenSaver"));
        auto source = DesktopIdleActivitySource::Create();
        QVERIFY(source);
        QCOMPARE(source->Monitor(), QStringLiteral("org.gnome.Mutter.IdleMonitor"));
        QCOMPARE(source->CursorPos(), QPoint(0, 0)); // the first look starts the clock
        QTest::qWait(150);
        QCOMPARE(source->CursorPos(), QPoint(0, 0)); // quiet for ten minutes
        gnome.idle = 20;
        QTest::qWait(150);
        QCOMPARE(source->CursorPos(), QPoint(1, 0));
        gnome.idle = 1000; // the same input, seen again: older than this look's interval
        QTest::qWait(150);
        QCOMPARE(source->CursorPos(), QPoint(1, 0));
        gnome.idle = 0; // but the monitor goes away: no input
        desktopBus().unregisterService(QStringLiteral("org.gnome.Mutter.IdleMonitor"));
        QTest::qWait(150);
        QCOMPARE(source->CursorPos(), QPoint(1, 0));
        QVERIFY(!source->AnyKeyActive());

        source = DesktopIdleActivitySource::Create();
        QVERIFY(source);
        QCOMPARE(source->Monitor(), QStringLiteral("org.freedesktop.ScreenSaver"));
        QCOMPARE(source->CursorPos(), QPoint(0, 0));
        kde.idle = 10;
        QTest::qWait(150);
        QCOMPARE(source->CursorPos(), QPoint(1, 0));
    }

    // Motion gives the pointer on the screen. A key or click is seen once, a held key until its
    // release or until the program is left.
    void inputToTheProgramsWindows() {
        QTest::mouseMove(&window, QPoint(30, 10));
        QTRY_COMPARE(own->CursorPos(), window.mapToGlobal(QPoint(30, 10)));
        QVERIFY(!own->AnyKeyActive());
        QTest::keyClick(&window, Qt::Key_A);
        QVERIFY(own->AnyKeyActive());
        QVERIFY(!own->AnyKeyActive());
        QTest::mouseClick(&window, Qt::LeftButton);
        QVERIFY(own->AnyKeyActive());
        QVERIFY(!own->AnyKeyActive());
        QTest::keyPress(&window, Qt::Key_Shift);
        QVERIFY(own->AnyKeyActive());
        QVERIFY(own->AnyKeyActive());
        QTest::keyRelease(&window, Qt::Key_Shift);
        QVERIFY(!own->AnyKeyActive());
        QTest::keyPress(&window, Qt::Key_Control);
        QEvent away(QEvent::ApplicationDeactivate);
        QCoreApplication::sendEvent(qApp, &away);
        own->AnyKeyActive();
        QVERIFY(!own->AnyKeyActive());
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestActivitySources)
#include "tst_activitysources.moc"
