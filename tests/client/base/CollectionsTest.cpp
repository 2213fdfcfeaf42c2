#include "base/KeyedCollection.h"
#include "base/MsgBox.h"
#include "base/TLError.h"

#include <QtTest>

class CollectionsTest : public QObject {
    Q_OBJECT
private slots:
    void positionsAreOneBasedAndKeysIgnoreCase() {
        KeyedCollection<QString> c;
        c.Add(std::make_shared<QString>("three"), "3");
        c.Add(std::make_shared<QString>("Eight"), "Key8");
        c.Add(std::make_shared<QString>("loose"));
        QCOMPARE(c.Count(), 3);
        QCOMPARE(*c[1], QString("three"));
        QCOMPARE(*c[3], QString("loose"));
        QCOMPARE(*c["key8"], QString("Eight"));
        QVERIFY(c.Contains("KEY8"));
        c.Remove("3");
        QCOMPARE(*c[1], QString("Eight"));
    }

    void badAddressesRaiseTheProgramsNumbers() {
        KeyedCollection<int> c;
        c.Add(std::make_shared<int>(1), "a");
        auto numberOf = [](auto&& f) -> std::int32_t {
            const auto failure = Guard(f);
            return failure ? failure->number : 0;
        };
        QCOMPARE(numberOf([&] { c.Add(std::make_shared<int>(2), "A"); }), err::DuplicateKey);
        QCOMPARE(numberOf([&] { (void)c[0]; }), err::BadArgument);
        QCOMPARE(numberOf([&] { (void)c[2]; }), err::BadArgument);
        QCOMPARE(numberOf([&] { (void)c["missing"]; }), err::BadArgument);
        QCOMPARE(numberOf([&] { c.Remove(5); }), err::BadArgument);
        // Clearing the way the program does: take Count once, then remove item 1 that often.
        c.Add(std::make_shared<int>(3), "b");
        const long n = c.Count();
        for (long i = 0; i < n; ++i)
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

    void messageBoxesGoThroughTheHook() {
        QList<MsgBoxCall> seen;
        SetMsgBoxHook([&](const MsgBoxCall& call) {
            seen << call;
            return vb::vbNo;
        });
        QCOMPARE(MsgBox("a\r\rb", vb::vbYesNo | vb::vbQuestion), int(vb::vbNo));
        MsgBox("x", vb::vbCritical, "Anomaly Report ::here");
        SetMsgBoxHook({});
        QCOMPARE(seen.size(), 2);
        QCOMPARE(seen[0].text, QString("a\r\rb"));
        QCOMPARE(seen[0].title, QString("Tavlo"));
        QCOMPARE(seen[0].buttons(), int(vb::vbYesNo));
        QCOMPARE(seen[0].icon(), int(vb::vbQuestion));
        QCOMPARE(seen[1].title, QString("Anomaly Report ::here"));
        QCOMPARE(seen[1].icon(), int(vb::vbCritical));
    }
};

QTEST_MAIN(CollectionsTest)
#include "CollectionsTest.moc"
