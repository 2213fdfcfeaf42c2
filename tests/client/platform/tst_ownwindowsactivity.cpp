#include "platform/OwnWindowsActivitySource.h"
#include <QApplication>
#include <QLineEdit>
#include <QtTest>

// The fallback source: only what reaches the program's own windows counts.
class TestOwnWindowsActivity : public QObject {
    Q_OBJECT
    QLineEdit window;
    std::unique_ptr<OwnWindowsActivitySource> source;

private slots:
    void initTestCase() {
        window.setGeometry(50, 60, 200, 40);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        source = std::make_unique<OwnWindowsActivitySource>();
    }

    void motionOverAWindowGivesThePointerOnTheScreen() {
        QTest::mouseMove(&window, QPoint(30, 10));
        QTRY_COMPARE(source->CursorPos(), window.mapToGlobal(QPoint(30, 10)));
        QVERIFY(!source->AnyKeyActive());
    }

    void aKeyIsSeenOnceAndAHeldKeyUntilItsRelease() {
        QTest::keyClick(&window, Qt::Key_A);
        QVERIFY(source->AnyKeyActive());
        QVERIFY(!source->AnyKeyActive());
        QTest::keyPress(&window, Qt::Key_Shift);
        QVERIFY(source->AnyKeyActive());
        QVERIFY(source->AnyKeyActive());
        QTest::keyRelease(&window, Qt::Key_Shift);
        QVERIFY(!source->AnyKeyActive());
    }

    void aClickIsSeen() {
        QTest::mouseClick(&window, Qt::LeftButton);
        QVERIFY(source->AnyKeyActive());
        QVERIFY(!source->AnyKeyActive());
    }

    void leavingTheProgramForgetsKeysHeld() {
        QTest::keyPress(&window, Qt::Key_Control);
        QEvent away(QEvent::ApplicationDeactivate);
        QCoreApplication::sendEvent(qApp, &away);
        source->AnyKeyActive();
        QVERIFY(!source->AnyKeyActive());
    }
};

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    TestOwnWindowsActivity test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_ownwindowsactivity.moc"
