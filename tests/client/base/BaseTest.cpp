#include "base/Forms.h"
#include "base/KeyedCollection.h"
#include "base/Regional.h"
#include "base/TLError.h"

#include "Rows.h"
#include <QDialog>
#include <QtTest>

using namespace Regional;

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

// The foundations: keyed collections and traps, forms made at first touch, and the regional
// readings and formats of numbers and dates.
class BaseTest : public QObject {
    Q_OBJECT
private slots:
    // Positions count from 1 and keys ignore case; a bad address raises the program's numbers.
    void keyedCollections() {
        KeyedCollection<QString> c;
        c.Add(std::make_shared<QString>("three"), "3");
        c.Add(std::make_shared<QString>("Eight"), "Key8");
        c.Add(std::make_shared<QString>("loose"));
        QCOMPARE(c.Count(), 3);
        QCOMPARE(*c[1], QString("three"));
        QCOMPARE(*c[3], QString("loose"));
        QCOMPARE(*c["key8"], QString("Eight"));
        QVERIFY(c.Contains("KEY8"));
        const auto numberOf = [](auto&& f) { return Guard(f).value_or(Trapped{}).number; };
        QCOMPARE(numberOf([&] { c.Add(std::make_shared<QString>(), "KEY8"); }), err::DuplicateKey);
        QCOMPARE(numberOf([&] { (void)c[0]; }), err::BadArgument);
        QCOMPARE(numberOf([&] { (void)c[4]; }), err::BadArgument);
        QCOMPARE(numberOf([&] { (void)c["missing"]; }), err::BadArgument);
        QCOMPARE(numberOf([&] { c.Remove(5); }), err::BadArgument);
        c.Remove("3");
        QCOMPARE(*c[1], QString("Eight"));
        QCOMPARE(*c["KEY8"], QString("Eight")); // found at its new place
        // Clearing the way the program does: take Count once, then remove item 1 that often.
        for (long i = 0, n = c.Count(); i < n; ++i)
            c.Remove(1);
        QCOMPARE(c.Count(), 0);
    }

    void trapsSeeNumberAndDescription() {
        const auto failure = Guard([] { Raise(err::ItemNotFound); });
        QVERIFY(failure);
        QCOMPARE(failure->number, err::ItemNotFound);
        QVERIFY(failure->description.startsWith("Item cannot be found"));
        const auto foreign = Guard([] { throw std::runtime_error("disk full"); });
        QCOMPARE(foreign->description, QString("disk full"));
        QVERIFY(!Guard([] {}));
    }

    // A form is made and loaded once, at its first touch; unloading forgets it and the next
    // touch makes a new one; the active form is the active window.
    void formsLiveFromFirstTouchToUnload() {
        QVERIFY(!IsLoaded<frmTLFirst>() && FormRegistry::instance().activeForm() == nullptr);
        frmTLFirst& first = Form<frmTLFirst>();
        QVERIFY(first.touchedDuringLoad);
        QCOMPARE(&Form<frmTLFirst>(), &first);
        QCOMPARE(loads, 1);
        QPointer<frmTLSecond> second = &Form<frmTLSecond>();
        QCOMPARE(FormRegistry::instance().loadedNames(),
                 (QStringList{"frmtlfirst", "frmtlsecond"}));
        QCOMPARE(FormRegistry::instance().findByName("FRMTLSECOND"), second.data());
        Unload<frmTLSecond>();
        QCOMPARE(frmTLSecond::unloads, 1);
        QVERIFY(!IsLoaded<frmTLSecond>() && second->isHidden());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(second.isNull());
        Form<frmTLSecond>();
        QVERIFY(IsLoaded<frmTLSecond>());
        Unload<frmTLSecond>(); // unloading twice is harmless
        Unload<frmTLSecond>();
        QCOMPARE(frmTLSecond::unloads, 2);

        first.show();
        first.activateWindow();
        QApplication::setActiveWindow(&first);
        QCOMPARE(FormRegistry::instance().activeForm(), &first);
        FormRegistry::instance().unloadAll();
        QVERIFY(FormRegistry::instance().loadedNames().isEmpty());
    }

    void numbers_data() {
        columns<QString, bool, double>("text", "numeric", "val");
        row("blanks around", "  42 ", true, 42.0);
        row("leading point", ".5", true, 0.5);
        row("negative", "-3", true, -3.0);
        row("thousands", "1,000", true, 1.0);
        row("digits then letters", "12ab", false, 12.0);
        row("empty", "", false, 0.0);
        row("lone sign", "-", false, 0.0);
        row("exponent", "1e3", true, 1000.0);
        row("blanks inside for Val", "1 2x", false, 12.0);
    }
    void numbers() {
        auto [text, numeric, val] = fetch<QString, bool, double>("text", "numeric", "val");
        QCOMPARE(IsNumeric(text), numeric);
        QCOMPARE(Val(text), val);
    }

    void wholeNumbersRoundHalfToEven() {
        QCOMPARE(CLng(2.5), 2);
        QCOMPARE(CLng(3.5), 4);
        QCOMPARE(CLng(-2.5), -2);
        QCOMPARE(CLng(0.6), 1);
        QCOMPARE(CLng(QString("10.5")), 10);
        QCOMPARE(CInt(32767.4), std::int16_t(32767));
        QCOMPARE(Guard([] { CLng(3e10); })->number, 6);
        QCOMPARE(Guard([] { CInt(40000.0); })->number, 6);
        QCOMPARE(Guard([] { CLng(QString("x")); })->number, errTypeMismatch);
    }

    void dates_data() {
        columns<QString, QDateTime>("text", "moment"); // an invalid moment: no date
        row("short date", "3/7/2025", QDateTime(QDate(2025, 3, 7), QTime(0, 0)));
        row("padded with time", "03/07/2025 05:05 PM", QDateTime(QDate(2025, 3, 7), QTime(17, 5)));
        row("sentinel literal", "01/01/00 12:00AM", QDateTime(QDate(2000, 1, 1), QTime(0, 0)));
        row("two digit year 29", "1/1/29", QDateTime(QDate(2029, 1, 1), QTime(0, 0)));
        row("two digit year 30", "1/1/30", QDateTime(QDate(1930, 1, 1), QTime(0, 0)));
        row("iso", "2024-01-01T09:13:00", QDateTime(QDate(2024, 1, 1), QTime(9, 13)));
        row("time alone", "8:00 AM", QDateTime(QDate(1899, 12, 30), QTime(8, 0)));
        row("24 hour", "23:30", QDateTime(QDate(1899, 12, 30), QTime(23, 30)));
        row("month name", "March 7, 2025", QDateTime(QDate(2025, 3, 7), QTime(0, 0)));
        row("empty", "", QDateTime());
        row("bad day", "2/30/2025", QDateTime());
        row("bare number", "12", QDateTime());
        row("hour out of range", "13:00 PM", QDateTime());
    }
    void dates() {
        auto [text, moment] = fetch<QString, QDateTime>("text", "moment");
        QCOMPARE(IsDate(text), moment.isValid());
        if (moment.isValid())
            QCOMPARE(CDate(text), moment);
        else
            QCOMPARE(Guard([&] { CDate(text); })->number, errTypeMismatch);
    }

    void formats() {
        const QDateTime late(QDate(2025, 3, 7), QTime(23, 30, 15));
        QCOMPARE(Format(QDateTime(QDate(2025, 3, 7), QTime(0, 5)), "h:mm AMPM"),
                 QString("12:05 AM"));
        QCOMPARE(Format(QDateTime(QDate(2025, 3, 7), QTime(9, 5)), "hh:mm"), QString("09:05"));
        QCOMPARE(Format(late, "mm/dd/yyyy hh:mm AMPM"), QString("03/07/2025 11:30 PM"));
        QCOMPARE(Format(late, "dddd"), QString("Friday"));
        QCOMPARE(Format(0.456, "0%"), QString("46%"));
        QCOMPARE(Format(1.0, "0%"), QString("100%"));
        QCOMPARE(Format(12.34, "#0.0"), QString("12.3"));
        QCOMPARE(Format(0.05, "#0.0"), QString("0.1"));
    }

    void defaultTexts() {
        QCOMPARE(DateText(QDateTime(QDate(2025, 3, 7), QTime(9, 13, 5))),
                 QString("3/7/2025 9:13:05 AM"));
        QCOMPARE(DateText(QDateTime(QDate(2025, 3, 7), QTime(0, 0))), QString("3/7/2025"));
        QCOMPARE(DateText(QDateTime(QDate(1899, 12, 30), QTime(15, 0))), QString("3:00:00 PM"));
    }
};

QTEST_MAIN(BaseTest)
#include "BaseTest.moc"
