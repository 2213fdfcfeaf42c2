#include "data/TLConstants.h"
#include "data/TLDataAccess.h"
#include "data/TLFunctions.h"

#include "Rows.h"
#include <QApplication>
#include <QComboBox>
#include <QtTest>

// The shared helpers and the value conversions.
class TestFunctions : public QObject {
    Q_OBJECT
    TLFunctions f;
    TLDataAccess data;

private slots:
    void urlEncodeKeepsOnlyLettersAndDigits() {
        QCOMPARE(f.URLEncode(QStringLiteral("EXEC tl_X 'a b',1\n+%é")),
                 QStringLiteral("EXEC%20tl%5FX%20%27a%20b%27%2C1%0A%2B%25%E9"));
        QCOMPARE(f.URLEncode(QStringLiteral("\t€")), QStringLiteral("%09%80"));
    }

    void urlDecode() {
        QCOMPARE(f.URLDecode(QStringLiteral("a+b%41%e9")), QStringLiteral("a bAé"));
        QCOMPARE(f.URLDecode(QStringLiteral("x%4")), QStringLiteral("x\x04"));
        QCOMPARE(f.URLDecode(QStringLiteral("x%")), QStringLiteral("x")); // ends, no endless loop
    }

    void encodeDecodeIsItsOwnInverse_data() {
        columns<QString>("text");
        row("short", QStringLiteral("secret"));
        row("keys wrap", QStringLiteral("a password longer than nineteen characters"));
        row("high bytes", QStringLiteral("Müller€ß"));
        row("empty", QString());
    }
    void encodeDecodeIsItsOwnInverse() {
        QFETCH(QString, text);
        const QString once = f.EncodeDecode(text);
        if (!text.isEmpty())
            QVERIFY(once != text);
        QCOMPARE(f.EncodeDecode(once), text);
    }
    void encodeDecodeUsesBothKeys() {
        // 'a' (0x61) ^ 'q' (0x71) ^ '%' (0x25) = 0x35 '5'; index 20 wraps to the first bytes.
        QCOMPARE(f.EncodeDecode(QStringLiteral("a")), QStringLiteral("5"));
        const QString twenty = f.EncodeDecode(QString(20, QLatin1Char('a')));
        QCOMPARE(twenty.at(19), QLatin1Char('5'));
    }

    void dbIn_data() {
        columns<QString, bool, bool, QString>("text", "nullWhenEmpty", "wildcard", "result");
        row("apostrophe", "O'Brien", false, false, "'O''Brien'");
        row("trimmed", "  Ann  ", false, false, "'Ann'");
        row("blanks, quotes", "   ", false, false, "''");
        row("blanks, null", "   ", true, false, "NULL");
        row("wildcard", "Smi", false, true, "'Smi%'");
        row("wildcard, null flag", "Smi", true, true, "'Smi%'");
        row("line break kept", " Back at 2\r\n", false, false, "'Back at 2\r\n'");
        row("tab kept", "\tLunch ", false, false, "'\tLunch'");
        row("tab alone is text", "\t", true, false, "'\t'");
    }
    void dbIn() {
        QFETCH(QString, text);
        QFETCH(bool, nullWhenEmpty);
        QFETCH(bool, wildcard);
        QFETCH(QString, result);
        QCOMPARE(data.DBIn(text, nullWhenEmpty, wildcard), result);
    }

    void valuesOut() {
        QCOMPARE(data.DBOStr(QVariant()), QString());
        QCOMPARE(data.DBOStr(QStringLiteral("  x  ")), QStringLiteral("x"));
        QCOMPARE(data.DBOStr(QStringLiteral("\tx\r\n ")), QStringLiteral("\tx\r\n"));
        QCOMPARE(data.DBOStr(QVariant(true)), QStringLiteral("True"));
        QCOMPARE(data.DBOStr(QVariant(qlonglong(42))), QStringLiteral("42"));
        QCOMPARE(data.DBOLong(QVariant()), 0);
        QCOMPARE(data.DBOLong(QStringLiteral("12ab")), 12);
        QCOMPARE(data.DBOLong(QStringLiteral("abc")), 0);
        QCOMPARE(data.DBOLong(QVariant(2.5)), 2);
        QCOMPARE(data.DBOLong(QVariant(3.5)), 4);
        QCOMPARE(data.DBOLong(QStringLiteral("99999999999")), 0); // overflow ends quietly
        QCOMPARE(data.DBOLong(QVariant(qlonglong(-2147483648LL))), INT32_MIN);
        QCOMPARE(data.DBOLong(QVariant(qlonglong(2147483648LL))), 0);
        QCOMPARE(data.DBOLong(QVariant(true)), 0); // "True" reads as no number
        QCOMPARE(data.DBODouble(QVariant()), 0.0);
        QCOMPARE(data.DBODouble(QStringLiteral("2.75kg")), 2.75);
    }

    void phoneNumbers_data() {
        columns<QString, bool, QString>("text", "parentheses", "result");
        row("ten", "555 123 4567", false, "555-123-4567");
        row("ten, parentheses", "(555)123-4567", true, "(555) 123-4567");
        row("seven, parentheses", "123 4567", true, "123-4567");
        row("zeros", "000-0000", false, "");
        row("other", "+44 20 7946 0958 ext 12", false, "+44 20 7946 0958 ext");
    }
    void phoneNumbers() {
        QFETCH(QString, text);
        QFETCH(bool, parentheses);
        QFETCH(QString, result);
        QCOMPARE(f.FormatPhoneNumber(text, parentheses), result);
    }

    void zipCodes() {
        QCOMPARE(f.FormatZipCode(QStringLiteral("123456789")), QStringLiteral("12345-6789"));
        QCOMPARE(f.FormatZipCode(QStringLiteral("12345")), QStringLiteral("12345"));
        QCOMPARE(f.FormatZipCode(QStringLiteral("00000-0000")), QString());
    }

    void roundingFollowsHalfToEven() {
        QCOMPARE(f.RoundCeiling(3.0), 4.0);
        QCOMPARE(f.RoundCeiling(2.0), 2.0);
        QCOMPARE(f.RoundCeiling(2.2), 3.0);
        QCOMPARE(f.RoundFloor(3.0), 2.0);
        QCOMPARE(f.RoundFloor(2.0), 2.0);
        QCOMPARE(f.RoundFloor(2.7), 2.0);
    }

    void backColours() {
        QCOMPARE(f.GetBackColorValue(QStringLiteral("FF8000")), 0x0080FF);
        QCOMPARE(f.GetBackColorValue(QStringLiteral("00c000")), 0x00C000);
        QCOMPARE(f.GetBackColorValue(QStringLiteral("FFFFF")), 0xFFFFFF);
        QCOMPARE(f.GetBackColorValue(QString()), 0xFFFFFF);
        QCOMPARE(TLConstants().COLOR_RED(), 0x0000C0);
    }

    void fixedCharacters() {
        QCOMPARE(f.FixedCharacters(QStringLiteral("ab"), 5, QString(), false),
                 QStringLiteral("ab   "));
        QCOMPARE(f.FixedCharacters(QStringLiteral("7"), 3, QStringLiteral("0"), true),
                 QStringLiteral("007"));
        QCOMPARE(f.FixedCharacters(QStringLiteral("ab"), 5, QStringLiteral("xy"), false),
                 QStringLiteral("abxyxy")); // not cut back
        QCOMPARE(f.FixedCharacters(QStringLiteral("abcdef"), 3, QStringLiteral("x"), false),
                 QStringLiteral("abc"));
    }

    void replaceCharacter() {
        QCOMPARE(f.ReplaceCharacter(QStringLiteral("it's Ann's"), QStringLiteral("'"),
                                    QStringLiteral("*")),
                 QStringLiteral("it*s Ann*s"));
        QCOMPARE(f.ReplaceCharacter(QStringLiteral("a--b"), QStringLiteral("--"), QString()),
                 QStringLiteral("a-b")); // one character at each find, then no "--" is left
        QCOMPARE(
            f.ReplaceCharacter(QStringLiteral("a'b"), QStringLiteral("'"), QStringLiteral("''")),
            QStringLiteral("a''b")); // would never end; here one pass
    }

    void combos() {
        QComboBox states;
        states.addItem(QStringLiteral("old"));
        f.cboFillStates(&states);
        QCOMPARE(states.count(), 52);
        QCOMPARE(states.itemText(0), QStringLiteral("AL"));
        QCOMPARE(states.itemText(44), QStringLiteral("VI"));
        QCOMPARE(states.itemText(48), QStringLiteral("DC"));
        QCOMPARE(states.itemText(51), QStringLiteral("WY"));
        QComboBox times;
        f.FillTimeCombo(&times);
        QCOMPARE(times.count(), 48);
        QCOMPARE(times.itemText(1), QStringLiteral("00:30"));
        QCOMPARE(times.itemText(47), QStringLiteral("23:30"));
    }
};

QTEST_MAIN(TestFunctions)
#include "tst_functions.moc"
