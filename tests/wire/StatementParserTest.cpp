#include "wire/Statement.h"

#include "Rows.h"
#include <QtTest>

using namespace wire;

namespace {

Argument integer(std::int64_t v) {
    Argument a;
    a.kind = Argument::Kind::Integer;
    a.integer = v;
    return a;
}
Argument text(const QString& t) {
    Argument a;
    a.kind = Argument::Kind::Text;
    a.text = t;
    return a;
}
Argument null() {
    return Argument();
}
Argument now() {
    Argument a;
    a.kind = Argument::Kind::GetDate;
    return a;
}

QString describe(const std::vector<Argument>& args) {
    QStringList out;
    for (const Argument& a : args) {
        switch (a.kind) {
        case Argument::Kind::Integer:
            out << QString::number(a.integer);
            break;
        case Argument::Kind::Null:
            out << "NULL";
            break;
        case Argument::Kind::Text:
            out << "[" + a.text + "]";
            break;
        case Argument::Kind::GetDate:
            out << "getdate()";
            break;
        }
    }
    return out.join(" | ");
}

} // namespace

Q_DECLARE_METATYPE(std::vector<Argument>)

class StatementParserTest : public QObject {
    Q_OBJECT
private slots:
    void everyStatementTheClientSendsPasses_data() {
        columns<QString, QString, QString, std::vector<Argument>>("sql", "head", "procedure",
                                                                  "args");
        const auto statement = [](const char* name, const char* sql, const char* head,
                                  const char* procedure, std::vector<Argument> args) {
            row(name, sql, head, procedure, args);
        };
        statement("LoginCheck", "EXEC LoginCheck 'O''Brien','p@ss w''rd'", "EXEC", "LoginCheck",
                  {text("O'Brien"), text("p@ss w'rd")});
        statement("LoginCheck, empty password", "EXEC LoginCheck 'ann',''", "EXEC", "LoginCheck",
                  {text("ann"), text("")});
        statement("GetSysVB", "EXECUTE GetSysVB 'Session'", "EXECUTE", "GetSysVB",
                  {text("Session")});
        statement("tl_GetUserSecurity", "EXECUTE tl_GetUserSecurity 15", "EXECUTE",
                  "tl_GetUserSecurity", {integer(15)});
        statement("tl_GetAvailableStatuses", "EXECUTE tl_GetAvailableStatuses 1,15,12", "EXECUTE",
                  "tl_GetAvailableStatuses", {integer(1), integer(15), integer(12)});
        statement("tl_GetOrganizationGroups", "EXECUTE tl_GetOrganizationGroups 1", "EXECUTE",
                  "tl_GetOrganizationGroups", {integer(1)});
        statement("tl_GetOrganizationLocations", "EXECUTE tl_GetOrganizationLocations 1", "EXECUTE",
                  "tl_GetOrganizationLocations", {integer(1)});
        statement("board, five arguments", "EXEC tl_GetUserStatuses NULL,NULL,1,15,NULL", "EXEC",
                  "tl_GetUserStatuses", {null(), null(), integer(1), integer(15), null()});
        statement("one person, four arguments", "EXEC tl_GetUserStatuses NULL,12,1,NULL", "EXEC",
                  "tl_GetUserStatuses", {null(), integer(12), integer(1), null()});
        statement("one person, two arguments", "EXECUTE tl_GetUserStatuses NULL,12", "EXECUTE",
                  "tl_GetUserStatuses", {null(), integer(12)});
        statement("tl_GetMyFriendsList", "EXEC tl_GetMyFriendsList 15,1", "EXEC",
                  "tl_GetMyFriendsList", {integer(15), integer(1)});
        statement("tl_GetCompanyList for a user", "EXEC tl_GetCompanyList 15", "EXEC",
                  "tl_GetCompanyList", {integer(15)});
        statement("tl_GetCompanyList, no arguments", "EXECUTE tl_GetCompanyList", "EXECUTE",
                  "tl_GetCompanyList", {});
        statement("tl_GetContactList", "EXECUTE tl_GetContactList 1", "EXECUTE",
                  "tl_GetContactList", {integer(1)});
        statement("tl_GetAvailableColors", "EXEC tl_GetAvailableColors 1,15", "EXEC",
                  "tl_GetAvailableColors", {integer(1), integer(15)});
        statement("tl_SearchCompany", "EXECUTE tl_SearchCompany 'Acme; Sons -- Ltd'", "EXECUTE",
                  "tl_SearchCompany", {text("Acme; Sons -- Ltd")});
        statement("tl_SearchContacts, no head", "tl_SearchContacts 'a',5,'',7", "",
                  "tl_SearchContacts", {text("a"), integer(5), text(""), integer(7)});
        statement("tl_MyFriendsAdd", "EXECUTE tl_MyFriendsAdd 15,12", "EXECUTE", "tl_MyFriendsAdd",
                  {integer(15), integer(12)});
        statement("tl_MyFriendsRemove", "EXECUTE tl_MyFriendsRemove 15,12", "EXECUTE",
                  "tl_MyFriendsRemove", {integer(15), integer(12)});
        statement("tl_SetStatus with neither date nor comment",
                  "EXEC tl_SetStatus 12,8,NULL,NULL,NULL,15", "EXEC", "tl_SetStatus",
                  {integer(12), integer(8), null(), null(), null(), integer(15)});
        statement("tl_SetStatus with all",
                  "EXEC tl_SetStatus 12,8,'01/02/2024 1:30 PM','1:30 PM',"
                  "'Lunch; don''t wait\r\nback soon',15",
                  "EXEC", "tl_SetStatus",
                  {integer(12), integer(8), text("01/02/2024 1:30 PM"), text("1:30 PM"),
                   text("Lunch; don't wait\r\nback soon"), integer(15)});
        statement("tl_GetContactInformation, no head", "tl_GetContactInformation 12", "",
                  "tl_GetContactInformation", {integer(12)});
        statement("tl_GetContactStatus", "EXEC tl_GetContactStatus 12", "EXEC",
                  "tl_GetContactStatus", {integer(12)});
        statement("tl_GetContactNotesUnread, two blanks", "EXEC tl_GetContactNotesUnread  5",
                  "EXEC", "tl_GetContactNotesUnread", {integer(5)});
        statement("tl_UpdateChatStatus on", "EXEC tl_UpdateChatStatus 12, 1", "EXEC",
                  "tl_UpdateChatStatus", {integer(12), integer(1)});
        statement("tl_UpdateChatStatus off", "EXEC tl_UpdateChatStatus 12, 0", "EXEC",
                  "tl_UpdateChatStatus", {integer(12), integer(0)});
        statement("tl_GetContactNotes, no head", "tl_GetContactNotes 12, NULL, NULL, 15", "",
                  "tl_GetContactNotes", {integer(12), null(), null(), integer(15)});
        statement("tl_SetNoteRead", "EXEC tl_SetNoteRead 15, 301", "EXEC", "tl_SetNoteRead",
                  {integer(15), integer(301)});
        statement("tl_DeleteNote", "EXEC tl_DeleteNote 301, 15", "EXEC", "tl_DeleteNote",
                  {integer(301), integer(15)});
        statement(
            "tl_AddContactNote",
            "EXEC tl_AddContactNote 12,'Call ''Bob'' re: 50% /* not a comment */',15,1", "EXEC",
            "tl_AddContactNote",
            {integer(12), text("Call 'Bob' re: 50% /* not a comment */"), integer(15), integer(1)});
        statement(
            "tl_SendEmail, five", "EXEC tl_SendEmail 'a@x.org','Note','Hi\r\n','b@x.org','b@x.org'",
            "EXEC", "tl_SendEmail",
            {text("a@x.org"), text("Note"), text("Hi\r\n"), text("b@x.org"), text("b@x.org")});
        statement("tl_SendEmail, password mail",
                  "EXEC tl_SendEmail 'a@x.org','Pw','Body','b@x.org','b@x.org',''", "EXEC",
                  "tl_SendEmail",
                  {text("a@x.org"), text("Pw"), text("Body"), text("b@x.org"), text("b@x.org"),
                   text("")});
        statement("tl_ForgotPassword, no head", "tl_ForgotPassword 'ann@x.org','O''Neil'", "",
                  "tl_ForgotPassword", {text("ann@x.org"), text("O'Neil")});
        statement("tl_VersionCheck", "EXECUTE tl_VersionCheck", "EXECUTE", "tl_VersionCheck", {});
        statement("LogAnomaly",
                  "EXECUTE LogAnomaly 'Unspecified error: Unspecified error',-2147467259"
                  ",'TLDataAccess:LoadADOFromWeb','tavlo 1.0.0',12,'','DESK-7'",
                  "EXECUTE", "LogAnomaly",
                  {text("Unspecified error: Unspecified error"), integer(-2147467259),
                   text("TLDataAccess:LoadADOFromWeb"), text("tavlo 1.0.0"), integer(12), text(""),
                   text("DESK-7")});
        statement("lower-case keywords", "exec tl_x null,getdate()", "EXEC", "tl_x",
                  {null(), now()});
        statement("tabs and line breaks between tokens", "\r\n\tEXEC\ttl_x\n1\r\n,\t'a'  ", "EXEC",
                  "tl_x", {integer(1), text("a")});
        statement("64-bit limits", "tl_x -9223372036854775808,9223372036854775807", "", "tl_x",
                  {integer(std::numeric_limits<std::int64_t>::min()),
                   integer(std::numeric_limits<std::int64_t>::max())});
    }
    void everyStatementTheClientSendsPasses() {
        QFETCH(QString, sql);
        QFETCH(QString, head);
        QFETCH(QString, procedure);
        QFETCH(std::vector<Argument>, args);
        QString error;
        const auto s = StatementParser::parse(sql, &error);
        QVERIFY2(s, qPrintable(error));
        QCOMPARE(s->kind, Statement::Kind::Procedure);
        QCOMPARE(s->head, head);
        QCOMPARE(s->procedure, procedure);
        QCOMPARE(describe(s->args), describe(args));
    }

    void theSessionsStatementsPass() {
        // Built as the sign-in builds them: values quoted as they are, not escaped.
        const QString insert = "INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, "
                               "LoginDate, ComputerName,IPAddress,UserSys) VALUES (4001,12,"
                               "'tavlo v1.0.0',getdate(),'DESK-7','192.168.1.20',15)";
        QString error;
        const auto in = StatementParser::parse(insert, &error);
        QVERIFY2(in, qPrintable(error));
        QCOMPARE(in->kind, Statement::Kind::SessionInsert);
        QVERIFY(in->procedure.isEmpty());
        QCOMPARE(describe(in->args),
                 describe({integer(4001), integer(12), text("tavlo v1.0.0"), now(), text("DESK-7"),
                           text("192.168.1.20"), integer(15)}));

        const auto out = StatementParser::parse(
            "UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = 4001", &error);
        QVERIFY2(out, qPrintable(error));
        QCOMPARE(out->kind, Statement::Kind::SessionUpdate);
        QCOMPARE(describe(out->args), describe({integer(4001)}));
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
        QVERIFY2(!s, qPrintable("passed: " + describe(s ? s->args : std::vector<Argument>())));
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
        QFETCH(QString, sql);
        QFETCH(QString, reason);
        QString error;
        QVERIFY(!StatementParser::parse(sql, &error));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }
};

QTEST_GUILESS_MAIN(StatementParserTest)
#include "StatementParserTest.moc"
