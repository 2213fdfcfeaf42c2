#include "wire/Cp1252.h"
#include "wire/FormEncoding.h"
#include "wire/Statement.h"

#include "Rows.h"
#include <QtTest>

using namespace wire;

namespace {

// A parsed statement in one line: its head (or "-"), procedure or kind, then
// its arguments, texts in brackets.
QString describe(const Statement& s) {
    using K = Argument::Kind;
    QStringList args;
    for (const Argument& a : s.args)
        args << (a.kind == K::Integer ? QString::number(a.integer)
                 : a.kind == K::Null  ? QString("NULL")
                 : a.kind == K::Text  ? "[" + a.text + "]"
                                      : QString("getdate()"));
    const QString what = s.kind == Statement::Kind::SessionInsert ? "INSERT Sessions"
                         : s.kind == Statement::Kind::SessionUpdate
                             ? "UPDATE Sessions"
                             : (s.head.isEmpty() ? "-" : s.head) + " " + s.procedure;
    return what + ": " + args.join(" | ");
}

} // namespace

// Statements: which the gateway takes, and the code page and form encoding they travel in.
class StatementParserTest : public QObject {
    Q_OBJECT
private slots:
    void everyStatementTheClientSendsPasses_data() {
        columns<QString, QString>("sql", "parsed");
        row("doubled quotes, empty text", "EXEC LoginCheck 'O''Brien',''",
            "EXEC LoginCheck: [O'Brien] | []");
        row("numbers", "EXECUTE tl_GetAvailableStatuses 1,15,12",
            "EXECUTE tl_GetAvailableStatuses: 1 | 15 | 12");
        row("NULLs", "EXEC tl_GetUserStatuses NULL,NULL,1",
            "EXEC tl_GetUserStatuses: NULL | NULL | 1");
        row("no arguments", "EXECUTE tl_GetCompanyList", "EXECUTE tl_GetCompanyList: ");
        row("no head", "tl_SearchContacts 'a',5,'',7", "- tl_SearchContacts: [a] | 5 | [] | 7");
        row("punctuation inside text", "EXEC tl_x 'Acme; Sons -- Ltd /* 50% */'",
            "EXEC tl_x: [Acme; Sons -- Ltd /* 50% */]");
        row("line break inside text", "EXEC tl_x 'Lunch\r\nback'", "EXEC tl_x: [Lunch\r\nback]");
        row("blanks after commas, two before", "EXEC tl_x  12, 1", "EXEC tl_x: 12 | 1");
        row("lower-case keywords", "exec tl_x null,getdate()", "EXEC tl_x: NULL | getdate()");
        row("tabs and line breaks between tokens", "\r\n\tEXEC\ttl_x\n1\r\n,\t'a'  ",
            "EXEC tl_x: 1 | [a]");
        row("64-bit limits", "tl_x -9223372036854775808,9223372036854775807",
            "- tl_x: -9223372036854775808 | 9223372036854775807");
        // Built as the sign-in builds them: values quoted as they are, not escaped.
        row("session opened",
            "INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, LoginDate, "
            "ComputerName,IPAddress,UserSys) VALUES (4001,12,'v1',getdate(),'PC','1.2.3.4',15)",
            "INSERT Sessions: 4001 | 12 | [v1] | getdate() | [PC] | [1.2.3.4] | 15");
        row("session closed", "UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = 4001",
            "UPDATE Sessions: 4001");
    }
    void everyStatementTheClientSendsPasses() {
        auto [sql, parsed] = fetch<QString, QString>("sql", "parsed");
        QString error;
        const auto s = StatementParser::parse(sql, &error);
        QVERIFY2(s, qPrintable(error));
        QCOMPARE(describe(*s), parsed);
    }

    // Anything else is refused with one line that says why (and names the fault where given).
    void anythingElseIsRefused_data() {
        columns<QString, QString>("sql", "reason");
        const QString insert = "INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, "
                               "LoginDate, ComputerName,IPAddress,UserSys) VALUES ";
        row("empty", "", "empty");
        row("blanks only", " \r\n\t", "empty");
        row("quote break-out", "EXEC LoginCheck 'x'; DROP TABLE x --','y'", "semicolon");
        row("stacked without a semicolon", "EXEC tl_a 1 EXEC tl_b 2", "");
        row("line comment", "EXEC tl_a 1 -- note", "comment");
        row("block comment", "EXEC tl_a /* x */ 1", "comment");
        row("unbalanced quote", "EXEC tl_a 'abc", "unbalanced quote");
        row("quote doubled at the end", "EXEC tl_a 'abc''", "unbalanced quote");
        row("bare word argument", "EXEC tl_a user", "");
        row("decimal number", "EXEC tl_a 1.5", "");
        row("hex number", "EXEC tl_a 0x10", "malformed number");
        row("too big", "EXEC tl_a 9223372036854775808", "out of range");
        row("too small", "EXEC tl_a -9223372036854775809", "out of range");
        row("trailing comma", "EXEC tl_a 1,", "");
        row("leading comma", "EXEC tl_a ,1", "");
        row("head without a name", "EXEC", "procedure name");
        row("head twice", "EXEC EXECUTE tl_a", "no procedure name");
        row("reserved word as name", "SHUTDOWN", "no procedure name");
        row("owner-qualified name", "EXEC dbo.tl_a 1", "");
        row("getdate without parentheses", "EXEC tl_a getdate", "");
        row("N prefix", "EXEC tl_a N'x'", "");
        row("double quotes", "EXEC tl_a \"x\"", "");
        row("no-break space outside quotes", "EXEC\u00A0tl_a 1", "");
        row("byte 0xFF in a name", "EXEC tl_\u00FF 1", "");
        row("NUL outside quotes", QString("EXEC tl_a 1") + QChar(0), "NUL");
        row("NUL inside quotes", QString("EXEC tl_a 'a") + QChar(0) + "b'", "NUL");
        row("100 KB text", "EXEC tl_a 12,'" + QString(100000, u'x') + "'", "longer than");
        row("8001 characters in one text", "EXEC tl_a '" + QString(8001, u'x') + "'",
            "longer than");
        row("name of 129 characters", "EXEC " + QString(129, u'a'), "too long");
        row("other update", "UPDATE Sessions SET LogoutDate = NULL WHERE SessionSys = 1", "");
        row("update without where", "UPDATE Sessions SET LogoutDate = getdate()", "");
        row("update or", "UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = 1 OR 1 = 1",
            "end of the statement");
        row("update other table", "UPDATE Users SET LogoutDate = getdate() WHERE SessionSys = 1",
            "");
        row("insert, columns reordered",
            "INSERT INTO Sessions (SalesmanSys, SessionSys, SessionDetails, LoginDate, "
            "ComputerName,IPAddress,UserSys) VALUES (1,2,'a',getdate(),'b','c',3)",
            "");
        row("insert, text for a number", insert + "('1',2,'a',getdate(),'b','c',3)", "");
        row("insert, two rows",
            insert + "(1,2,'a',getdate(),'b','c',3),(4,5,'d',getdate(),'e','f',6)",
            "end of the statement");
        row("insert into another table", "INSERT INTO Users (SessionSys) VALUES (1)", "");
    }
    void anythingElseIsRefused() {
        auto [sql, reason] = fetch<QString, QString>("sql", "reason");
        QString error;
        const auto s = StatementParser::parse(sql, &error);
        QVERIFY2(!s, qPrintable("passed: " + (s ? describe(*s) : QString())));
        QVERIFY(!error.isEmpty() && !error.contains(u'\n'));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }

    // Every byte decodes as the code page has it (the five it leaves unassigned as the C1
    // control of the same value), encodes back, and travels through a form body unchanged.
    void everyByteDecodesAsTheCodePageSays() {
        QByteArray bytes;
        for (int b = 0; b < 256; ++b)
            bytes.append(char(b));
        const QString all = cp1252::decode(bytes);
        QCOMPARE(all.left(0x80), QString::fromLatin1(bytes.left(0x80)));
        QCOMPARE(all.mid(0x80, 32),
                 QString("€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008DŽ\u008F\u0090‘’“”•–—˜™š›œ\u009DžŸ"));
        QCOMPARE(all.mid(0xA0), QString::fromLatin1(bytes.mid(0xA0)));
        QCOMPARE(cp1252::encode(all), bytes);
        const QByteArray body = "strSQL=" + form::URLEncode(all).toLatin1();
        QCOMPARE(form::field(body, "strSQL").value_or("<refused>"), all);
    }

    // Only ASCII letters and digits go as they are; the rest as the code page's byte, and a
    // character outside the code page as a question mark.
    void urlEncodeKeepsOnlyLettersAndDigits_data() {
        columns<QString, QString>("text", "encoded");
        row("letters and digits", "azAZ09", "azAZ09");
        row("blank and line breaks", "a b\r\n", "a%20b%0D%0A");
        row("codes under 16", QString("\x01\t") + QChar(0), "%01%09%00");
        row("SQL punctuation", "EXEC x 'O''Neil',5;--",
            "EXEC%20x%20%27O%27%27Neil%27%2C5%3B%2D%2D");
        row("unreserved marks too", "-_.~+*%", "%2D%5F%2E%7E%2B%2A%25");
        row("non-ASCII in the code page", "é€ÿ™", "%E9%80%FF%99");
        row("outside the code page", "\u0100中\u0080😀", "%3F%3F%3F%3F%3F");
        row("empty", "", "");
    }
    void urlEncodeKeepsOnlyLettersAndDigits() {
        auto [text, encoded] = fetch<QString, QString>("text", "encoded");
        QCOMPARE(form::URLEncode(text), encoded);
    }

    // The strSQL field of a form body: its value, or the reason the body is refused.
    void fieldDecodesOneField_data() {
        columns<QByteArray, QString, QString>("body", "value", "refusal");
        row("the gateway's body", QByteArray("strSQL=EXEC%20x%20%27a%27%2C5"), "EXEC x 'a',5", "");
        row("plus is a blank", QByteArray("strSQL=a+b"), "a b", "");
        row("single-byte text, lower-case hex", QByteArray("strSQL=Zo%EB%20%80%e9"), "Zoë €é", "");
        row("among others", QByteArray("x=1&strSQL=%0D%0A&y=%41"), "\r\n", "");
        row("empty value", QByteArray("strSQL="), "", "");
        row("no equals sign", QByteArray("strSQL"), "", "");
        row("empty pairs", QByteArray("&&strSQL=a&"), "a", "");
        row("encoded name", QByteArray("str%53QL=a"), "a", "");
        row("bad escape in another field's value", QByteArray("x=%G1&strSQL=a"), "a", "");
        row("missing", QByteArray("sql=x"), "", "missing");
        row("empty body", QByteArray(), "", "missing");
        row("repeated", QByteArray("strSQL=a&strSQL=b"), "", "more than once");
        row("repeated, once encoded", QByteArray("strSQL=a&str%53QL=b"), "", "more than once");
        row("escape cut short", QByteArray("strSQL=ab%4"), "", "escape");
        row("not hex", QByteArray("strSQL=%zz"), "", "escape");
        row("bad escape in a name", QByteArray("%x=1&strSQL=a"), "", "escape");
    }
    void fieldDecodesOneField() {
        auto [body, value, refusal] =
            fetch<QByteArray, QString, QString>("body", "value", "refusal");
        QString error;
        const auto decoded = form::field(body, "strSQL", &error);
        if (refusal.isEmpty()) {
            QVERIFY2(decoded, qPrintable(error));
            QCOMPARE(*decoded, value);
        } else {
            QVERIFY(!decoded &&
                    !form::field(body, "strSQL")); // also without a place for the reason
            QVERIFY2(error.contains(refusal), qPrintable(error));
        }
    }
};

QTEST_GUILESS_MAIN(StatementParserTest)
#include "StatementParserTest.moc"
