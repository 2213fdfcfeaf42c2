#include "base/Forms.h"

#include <QDialog>
#include <QtTest>

namespace {

int loads = 0;

class frmTLFirst : public QWidget {
public:
    frmTLFirst() { setObjectName("frmTLFirst"); }
    void Form_Load() {
        ++loads;
        // A load that touches its own form must find this instance, not make a second one.
        Form<frmTLFirst>().touchedDuringLoad = true;
    }
    bool touchedDuringLoad = false;
};

class frmTLSecond : public QWidget, public UnloadAware {
public:
    frmTLSecond() { setObjectName("frmTLSecond"); }
    void Form_Unload() override { ++unloads; }
    static inline int unloads = 0;
};

} // namespace

class FormsTest : public QObject {
    Q_OBJECT
private slots:
    void firstTouchMakesAndLoadsOnce() {
        QVERIFY(!IsLoaded<frmTLFirst>());
        frmTLFirst& first = Form<frmTLFirst>();
        QCOMPARE(loads, 1);
        QVERIFY(first.touchedDuringLoad);
        QCOMPARE(&Form<frmTLFirst>(), &first);
        QCOMPARE(loads, 1);
        QCOMPARE(FormRegistry::instance().loadedNames(), QStringList{"frmtlfirst"});
    }

    void unloadForgetsAndNextTouchMakesANewOne() {
        QPointer<frmTLSecond> second = &Form<frmTLSecond>();
        QCOMPARE(FormRegistry::instance().loadedNames(),
                 (QStringList{"frmtlfirst", "frmtlsecond"}));
        QCOMPARE(FormRegistry::instance().findByName("FRMTLSECOND"), second.data());
        Unload<frmTLSecond>();
        QCOMPARE(frmTLSecond::unloads, 1);
        QVERIFY(!IsLoaded<frmTLSecond>());
        QVERIFY(second->isHidden());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(second.isNull());
        Form<frmTLSecond>();
        QVERIFY(IsLoaded<frmTLSecond>());
        Unload<frmTLSecond>(); // unloading twice is harmless
        Unload<frmTLSecond>();
        QCOMPARE(frmTLSecond::unloads, 2);
    }

    void activeFormIsTheActiveWindow() {
        QVERIFY(FormRegistry::instance().activeForm() == nullptr);
        frmTLFirst& first = Form<frmTLFirst>();
        first.show();
        first.activateWindow();
        QApplication::setActiveWindow(&first);
        QCOMPARE(FormRegistry::instance().activeForm(), &first);
        FormRegistry::instance().unloadAll();
        QVERIFY(FormRegistry::instance().loadedNames().isEmpty());
    }
};

QTEST_MAIN(FormsTest)
#include "FormsTest.moc"
