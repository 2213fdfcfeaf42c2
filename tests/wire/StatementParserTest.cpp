#include "wire/Cp1252.h"
#include "wire/FormEncoding.h"
#include "wire/Statement.h"

#include "Rows.h"
#include <QtTest>
#include <cerrno>
#include <iconv.h>

using namespace wire;

namespace {

// The C library's own Windows-1252 table, for the 251 assigned bytes: an independent check of
// ours. Returns the character, or nothing for the unassigned bytes (which the library refuses).
std::optional<char16_t> libraryDecode(unsigned char byte) {
    iconv_t cd = iconv_open("UTF-16LE", "CP1252");
    if (cd == iconv_t(-1))
        qFatal("no CP1252 converter in the C library");
    char in[1] = {char(byte)};
    char out[4] = {};
    char* inp = in;
    char* outp = out;
    size_t inLeft = 1;
    size_t outLeft = sizeof out;
    const size_t rc = iconv(cd, &inp, &inLeft, &outp, &outLeft);
    iconv_close(cd);
    if (rc == size_t(-1) || outLeft != 2)
        return std::nullopt;
    return char16_t(static_cast<unsigned char>(out[0]) | static_cast<unsigned char>(out[1]) << 8);
}

// A parsed statement in one line: its head (or "-"), procedure or kind, then
// its arguments, texts in brackets.
QString describe(const Statement& s) {
    QStringList args;
    for (const Argument& a : s.args) {
        switch (a.kind) {
        case Argument::Kind::Integer:
            args << QString::number(a.integer);
            break;
        case Argument::Kind::Null:
            args << "NULL";
            break;
        case Argument::Kind::Text:
            args << "[" + a.text + "]";
            break;
        case Argument::Kind::GetDate:
            args << "getdate()";
            break;
        }
    }
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
        row("LoginCheck", "EXEC LoginCheck 'O''Brien','p@ss w''rd'",
            "EXEC LoginCheck: [O'Brien] | [p@ss w'rd]");
        row("LoginCheck, empty password", "EXEC LoginCheck 'ann',''",
            "EXEC LoginCheck: [ann] | []");
        row("GetSysVB", "EXECUTE GetSysVB 'Session'", "EXECUTE GetSysVB: [Session]");
        row("tl_GetUserSecurity", "EXECUTE tl_GetUserSecurity 15",
            "EXECUTE tl_GetUserSecurity: 15");
        row("tl_GetAvailableStatuses", "EXECUTE tl_GetAvailableStatuses 1,15,12",
            "EXECUTE tl_GetAvailableStatuses: 1 | 15 | 12");
        row("board, five arguments", "EXEC tl_GetUserStatuses NULL,NULL,1,15,NULL",
            "EXEC tl_GetUserStatuses: NULL | NULL | 1 | 15 | NULL");
        row("one person, two arguments", "EXECUTE tl_GetUserStatuses NULL,12",
            "EXECUTE tl_GetUserStatuses: NULL | 12");
        row("no arguments", "EXECUTE tl_GetCompanyList", "EXECUTE tl_GetCompanyList: ");
        row("tl_SearchCompany", "EXECUTE tl_SearchCompany 'Acme; Sons -- Ltd'",
            "EXECUTE tl_SearchCompany: [Acme; Sons -- Ltd]");
        row("tl_SearchContacts, no head", "tl_SearchContacts 'a',5,'',7",
            "- tl_SearchContacts: [a] | 5 | [] | 7");
        row("tl_SetStatus with neither date nor comment",
            "EXEC tl_SetStatus 12,8,NULL,NULL,NULL,15",
            "EXEC tl_SetStatus: 12 | 8 | NULL | NULL | NULL | 15");
        row("tl_SetStatus with all",
            "EXEC tl_SetStatus 12,8,'01/02/2024 1:30 PM','1:30 PM','Lunch; don''t "
            "wait\r\nback soon',15",
            "EXEC tl_SetStatus: 12 | 8 | [01/02/2024 1:30 PM] | [1:30 PM] | "
            "[Lunch; don't wait\r\nback soon] | 15");
        row("tl_GetContactNotesUnread, two blanks", "EXEC tl_GetContactNotesUnread  5",
            "EXEC tl_GetContactNotesUnread: 5");
        row("tl_UpdateChatStatus", "EXEC tl_UpdateChatStatus 12, 1",
            "EXEC tl_UpdateChatStatus: 12 | 1");
        row("tl_GetContactNotes, no head", "tl_GetContactNotes 12, NULL, NULL, 15",
            "- tl_GetContactNotes: 12 | NULL | NULL | 15");
        row("tl_AddContactNote",
            "EXEC tl_AddContactNote 12,'Call ''Bob'' re: 50% /* not a comment "
            "*/',15,1",
            "EXEC tl_AddContactNote: 12 | [Call 'Bob' re: 50% /* not a comment */] "
            "| 15 | 1");
        row("tl_SendEmail", "EXEC tl_SendEmail 'a@x.org','Pw','Hi\r\n','b@x.org','b@x.org',''",
            "EXEC tl_SendEmail: [a@x.org] | [Pw] | [Hi\r\n] | [b@x.org] | "
            "[b@x.org] | []");
        row("tl_ForgotPassword, no head", "tl_ForgotPassword 'ann@x.org','O''Neil'",
            "- tl_ForgotPassword: [ann@x.org] | [O'Neil]");
        row("LogAnomaly",
            "EXECUTE LogAnomaly 'Unspecified "
            "error',-2147467259,'TLDataAccess:LoadADOFromWeb','tavlo "
            "1.0.0',12,'','DESK-7'",
            "EXECUTE LogAnomaly: [Unspecified error] | -2147467259 | "
            "[TLDataAccess:LoadADOFromWeb] | [tavlo 1.0.0] | 12 | [] | [DESK-7]");
        row("lower-case keywords", "exec tl_x null,getdate()", "EXEC tl_x: NULL | getdate()");
        row("tabs and line breaks between tokens", "\r\n\tEXEC\ttl_x\n1\r\n,\t'a'  ",
            "EXEC tl_x: 1 | [a]");
        row("64-bit limits", "tl_x -9223372036854775808,9223372036854775807",
            "- tl_x: -9223372036854775808 | 9223372036854775807");
        // Built as the sign-in builds them: values quoted as they are, not escaped.
        row("session opened",
            "INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, "
            "LoginDate, ComputerName,IPAddress,UserSys) VALUES (4001,12,'tavlo "
            "v1.0.0',getdate(),'DESK-7','192.168.1.20',15)",
            "INSERT Sessions: 4001 | 12 | [tavlo v1.0.0] | getdate() | [DESK-7] | "
            "[192.168.1.20] | 15");
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

    void anythingElseIsRefused_data() {
        columns<QString>("sql");
        const QString insert = "INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, "
                               "LoginDate, ComputerName,IPAddress,UserSys) VALUES ";
        row("empty", "");
        row("blanks only", " \r\n\t");
        row("injection through a name", "EXEC LoginCheck 'x'; DROP TABLE x --','y'");
        row("quote injection", "EXEC LoginCheck ''; DROP TABLE x --',''");
        row("stacked with a semicolon", "EXEC tl_a 1; EXEC tl_b 2");
        row("stacked without", "EXEC tl_a 1 EXEC tl_b 2");
        row("trailing semicolon", "EXECUTE tl_VersionCheck;");
        row("line comment", "EXEC tl_a 1 -- note");
        row("block comment", "EXEC tl_a /* x */ 1");
        row("unbalanced quote", "EXEC tl_a 'abc");
        row("quote doubled at the end", "EXEC tl_a 'abc''");
        row("nested call", "EXEC tl_a EXEC tl_b");
        row("call as argument", "EXEC tl_a tl_b(1)");
        row("bare word argument", "EXEC tl_a user");
        row("expression", "EXEC tl_a 1+1");
        row("parenthesised", "EXEC tl_a (1)");
        row("decimal number", "EXEC tl_a 1.5");
        row("hex number", "EXEC tl_a 0x10");
        row("too big", "EXEC tl_a 9223372036854775808");
        row("too small", "EXEC tl_a -9223372036854775809");
        row("far too big", "EXEC tl_a " + QString(40, u'9'));
        row("trailing comma", "EXEC tl_a 1,");
        row("leading comma", "EXEC tl_a ,1");
        row("empty argument", "EXEC tl_a 1,,2");
        row("head without a name", "EXEC");
        row("head twice", "EXEC EXECUTE tl_a");
        row("reserved word as name", "SHUTDOWN");
        row("select", "SELECT * FROM Users");
        row("bracketed name", "EXEC [tl_a] 1");
        row("owner-qualified name", "EXEC dbo.tl_a 1");
        row("variable", "EXEC tl_a @x");
        row("getdate without parentheses", "EXEC tl_a getdate");
        row("N prefix", "EXEC tl_a N'x'");
        row("double quotes", "EXEC tl_a \"x\"");
        row("byte 0x80 outside quotes", "EXEC tl_a\u0080 1");
        row("byte 0xA0 outside quotes", "EXEC\u00A0tl_a 1");
        row("byte 0xFF in a name", "EXEC tl_\u00FF 1");
        row("NUL outside quotes", QString("EXEC tl_a 1") + QChar(0));
        row("NUL inside quotes", QString("EXEC tl_a 'a") + QChar(0) + "b'");
        row("100 KB text", "EXEC tl_AddContactNote 12,'" + QString(100000, u'x') + "',15,0");
        row("8001 characters in one text", "EXEC tl_a '" + QString(8001, u'x') + "'");
        row("name of 129 characters", "EXEC " + QString(129, u'a'));
        row("other update", "UPDATE Sessions SET LogoutDate = NULL WHERE SessionSys = 1");
        row("update without where", "UPDATE Sessions SET LogoutDate = getdate()");
        row("update, two statements", "UPDATE Sessions SET LogoutDate = getdate() "
                                      "WHERE SessionSys = 1 DELETE Sessions");
        row("update other table", "UPDATE Users SET LogoutDate = getdate() WHERE SessionSys = 1");
        row("update or", "UPDATE Sessions SET LogoutDate = getdate() WHERE "
                         "SessionSys = 1 OR 1 = 1");
        row("insert, columns reordered",
            "INSERT INTO Sessions (SalesmanSys, SessionSys, SessionDetails, "
            "LoginDate, "
            "ComputerName,IPAddress,UserSys) VALUES (1,2,'a',getdate(),'b','c',3)");
        row("insert, text for a number", insert + "('1',2,'a',getdate(),'b','c',3)");
        row("insert, missing value", insert + "(1,2,'a',getdate(),'b','c')");
        row("insert, two rows",
            insert + "(1,2,'a',getdate(),'b','c',3),(4,5,'d',getdate(),'e','f',6)");
        row("insert, unescaped quote in a name", insert + "(1,2,'a',getdate(),'Bob's PC','c',3)");
        row("insert into another table", "INSERT INTO Users (SessionSys) VALUES (1)");
    }
    void anythingElseIsRefused() {
        QFETCH(QString, sql);
        QString error;
        const auto s = StatementParser::parse(sql, &error);
        QVERIFY2(!s, qPrintable("passed: " + (s ? describe(*s) : QString())));
        QVERIFY(!error.isEmpty());
        QVERIFY(!error.contains(u'\n'));
    }

    void reasonsNameTheFault_data() {
        columns<QString, QString>("sql", "reason");
        row("comment", "EXEC tl_a 1 --", "comment");
        row("semicolon", "EXEC tl_a 1;", "semicolon");
        row("quote", "EXEC tl_a 'x", "unbalanced quote");
        row("range", "EXEC tl_a 99999999999999999999", "out of range");
        row("length", QString(20000, u'x'), "longer than");
    }
    void reasonsNameTheFault() {
        auto [sql, reason] = fetch<QString, QString>("sql", "reason");
        QString error;
        QVERIFY(!StatementParser::parse(sql, &error));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }

    void everyByteDecodesAsTheCodePageSays() {
        int assigned = 0;
        for (int b = 0; b < 256; ++b) {
            const char byte = char(b);
            const QString decoded = cp1252::decode(QByteArrayView(&byte, 1));
            QCOMPARE(decoded.size(), 1);
            if (const auto expected = libraryDecode(static_cast<unsigned char>(b))) {
                ++assigned;
                QCOMPARE(decoded.at(0).unicode(), *expected);
            } else {
                // Unassigned: the C1 control of the same value.
                QCOMPARE(int(decoded.at(0).unicode()), b);
            }
            // And every byte comes back from its character.
            QCOMPARE(cp1252::encode(decoded), QByteArray(1, byte));
            QCOMPARE(cp1252::encodeChar(decoded.at(0)), byte);
        }
        QCOMPARE(assigned, 251);
    }

    void charactersOutsideTheCodePageBecomeQuestionMarks_data() {
        columns<QString, QByteArray>("text", "bytes");
        row("latin extended", QString("\u0100\u017F"), QByteArray("??"));
        row("CJK", QString("中文"), QByteArray("??"));
        row("C1 control with a character of its own", QString("\u0080\u009F"), QByteArray("??"));
        row("emoji: each half", QString("😀"), QByteArray("??"));
        row("mixed", QString("Zoë € ™ Ω"), QByteArray("Zo\xEB \x80 \x99 ?"));
    }
    void charactersOutsideTheCodePageBecomeQuestionMarks() {
        auto [text, bytes] = fetch<QString, QByteArray>("text", "bytes");
        QCOMPARE(cp1252::encode(text), bytes);
    }

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
        auto [text, encoded] = fetch<QString, QString>("text", "encoded");
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
        auto [body, value] = fetch<QByteArray, QString>("body", "value");
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
        auto [body, reason] = fetch<QByteArray, QString>("body", "reason");
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

QTEST_GUILESS_MAIN(StatementParserTest)
#include "StatementParserTest.moc"
