#include "wire/FormEncoding.h"
#include "wire/Cp1252.h"

#include "Rows.h"
#include <QtTest>

using namespace wire;

class FormEncodingTest : public QObject {
    Q_OBJECT
private slots:
    void urlEncodeKeepsOnlyLettersAndDigits_data() {
        columns<QString, QString>("text", "encoded");
        row("letters and digits", "azAZ09", "azAZ09");
        row("blank", "a b", "a%20b");
        row("line feed and carriage return", "\r\n", "%0D%0A");
        row("codes under 16", QString("\x01\t"), "%01%09");
        row("NUL", QString(QChar(0)), "%00");
        row("SQL punctuation", "EXEC x 'O''Neil',5;--",
            "EXEC%20x%20%27O%27%27Neil%27%2C5%3B%2D%2D");
        row("unreserved marks too", "-_.~+*%", "%2D%5F%2E%7E%2B%2A%25");
        row("non-ASCII in the code page", "é€ÿ", "%E9%80%FF");
        row("outside the code page", "中", "%3F");
        row("empty", "", "");
    }
    void urlEncodeKeepsOnlyLettersAndDigits() {
        QFETCH(QString, text);
        QFETCH(QString, encoded);
        QCOMPARE(form::URLEncode(text), encoded);
    }

    void fieldDecodesOneField_data() {
        columns<QByteArray, QString>("body", "value");
        row("the gateway's body", QByteArray("strSQL=EXEC%20x%20%27a%27%2C5"), "EXEC x 'a',5");
        row("plus is a blank", QByteArray("strSQL=a+b"), "a b");
        row("single-byte text", QByteArray("strSQL=Zo%EB%20%80"), "Zoë €");
        row("among others", QByteArray("x=1&strSQL=%0D%0A&y=%41"), "\r\n");
        row("lower-case hex", QByteArray("strSQL=%e9"), "é");
        row("empty value", QByteArray("strSQL="), "");
        row("no equals sign", QByteArray("strSQL"), "");
        row("empty pairs", QByteArray("&&strSQL=a&"), "a");
        row("encoded name", QByteArray("str%53QL=a"), "a");
        row("bad escape in another field's value", QByteArray("x=%G1&strSQL=a"), "a");
    }
    void fieldDecodesOneField() {
        QFETCH(QByteArray, body);
        QFETCH(QString, value);
        QString error;
        const auto decoded = form::field(body, "strSQL", &error);
        QVERIFY2(decoded, qPrintable(error));
        QCOMPARE(*decoded, value);
    }

    void fieldRefusesWhatItCannotTrust_data() {
        columns<QByteArray, QString>("body", "reason");
        row("missing", QByteArray("sql=x"), "missing");
        row("empty body", QByteArray(), "missing");
        row("repeated", QByteArray("strSQL=a&strSQL=b"), "more than once");
        row("repeated, once encoded", QByteArray("strSQL=a&str%53QL=b"), "more than once");
        row("escape cut short", QByteArray("strSQL=ab%4"), "escape");
        row("percent at the end", QByteArray("strSQL=ab%"), "escape");
        row("not hex", QByteArray("strSQL=%zz"), "escape");
        row("bad escape in a name", QByteArray("%x=1&strSQL=a"), "escape");
    }
    void fieldRefusesWhatItCannotTrust() {
        QFETCH(QByteArray, body);
        QFETCH(QString, reason);
        QString error;
        QVERIFY(!form::field(body, "strSQL", &error));
        QVERIFY2(error.contains(reason), qPrintable(error));
        QVERIFY(!form::field(body, "strSQL")); // and without a place for the reason
    }

    void encodeThenDecodeGivesTheStatementBack() {
        QByteArray bytes;
        for (int c = 1; c < 256; ++c)
            bytes.append(char(c));
        const QString all = cp1252::decode(bytes); // every character the code page has
        const QByteArray body = "strSQL=" + form::URLEncode(all).toLatin1();
        QCOMPARE(form::field(body, "strSQL").value_or("<refused>"), all);
    }
};

QTEST_GUILESS_MAIN(FormEncodingTest)
#include "FormEncodingTest.moc"
