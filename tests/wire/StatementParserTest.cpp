#include "wire/Statement.h"

#include <QtTest>

using namespace wire;

namespace {

// The client's quoting of text arguments: blanks trimmed, quotes doubled, wrapped in quotes;
// empty text is two quotes, or NULL where the caller asks for it.
QString DBIn(const QString& text, bool nullWhenEmpty = false, bool appendWildcard = false) {
    qsizetype from = 0;
    qsizetype to = text.size();
    while (from < to && text.at(from) == u' ')
        ++from;
    while (to > from && text.at(to - 1) == u' ')
        --to;
    const QString t = text.mid(from, to - from);
    if (t.isEmpty())
        return nullWhenEmpty ? QStringLiteral("NULL") : QStringLiteral("''");
    QString quoted = t;
    quoted.replace("'", "''");
    return "'" + quoted + (appendWildcard ? "%" : "") + "'";
}

QString n(qlonglong v) {
    return QString::number(v);
}

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
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("head");
        QTest::addColumn<QString>("procedure");
        QTest::addColumn<std::vector<Argument>>("args");
        const auto row = [](const char* name, const QString& sql, const char* head,
                            const char* procedure, std::vector<Argument> args) {
            QTest::newRow(name) << sql << QString(head) << QString(procedure) << args;
        };
        const QString user = "O'Brien ";
        row("LoginCheck", "EXEC LoginCheck " + DBIn(user) + "," + DBIn("p@ss w'rd"), "EXEC",
            "LoginCheck", {text("O'Brien"), text("p@ss w'rd")});
        row("LoginCheck, empty password", "EXEC LoginCheck " + DBIn("ann") + "," + DBIn(""), "EXEC",
            "LoginCheck", {text("ann"), text("")});
        row("GetSysVB", "EXECUTE GetSysVB 'Session'", "EXECUTE", "GetSysVB", {text("Session")});
        row("tl_GetUserSecurity", "EXECUTE tl_GetUserSecurity " + n(15), "EXECUTE",
            "tl_GetUserSecurity", {integer(15)});
        row("tl_GetAvailableStatuses", "EXECUTE tl_GetAvailableStatuses 1,15,12", "EXECUTE",
            "tl_GetAvailableStatuses", {integer(1), integer(15), integer(12)});
        row("tl_GetOrganizationGroups", "EXECUTE tl_GetOrganizationGroups 1", "EXECUTE",
            "tl_GetOrganizationGroups", {integer(1)});
        row("tl_GetOrganizationLocations", "EXECUTE tl_GetOrganizationLocations 1", "EXECUTE",
            "tl_GetOrganizationLocations", {integer(1)});
        row("board, five arguments", "EXEC tl_GetUserStatuses NULL,NULL,1,15,NULL", "EXEC",
            "tl_GetUserStatuses", {null(), null(), integer(1), integer(15), null()});
        row("one person, four arguments", "EXEC tl_GetUserStatuses NULL,12,1,NULL", "EXEC",
            "tl_GetUserStatuses", {null(), integer(12), integer(1), null()});
        row("one person, two arguments", "EXECUTE tl_GetUserStatuses NULL,12", "EXECUTE",
            "tl_GetUserStatuses", {null(), integer(12)});
        row("tl_GetMyFriendsList", "EXEC tl_GetMyFriendsList 15,1", "EXEC", "tl_GetMyFriendsList",
            {integer(15), integer(1)});
        row("tl_GetCompanyList for a user", "EXEC tl_GetCompanyList 15", "EXEC",
            "tl_GetCompanyList", {integer(15)});
        row("tl_GetCompanyList, no arguments", "EXECUTE tl_GetCompanyList", "EXECUTE",
            "tl_GetCompanyList", {});
        row("tl_GetContactList", "EXECUTE tl_GetContactList 1", "EXECUTE", "tl_GetContactList",
            {integer(1)});
        row("tl_GetAvailableColors", "EXEC tl_GetAvailableColors 1,15", "EXEC",
            "tl_GetAvailableColors", {integer(1), integer(15)});
        row("tl_SearchCompany", "EXECUTE tl_SearchCompany " + DBIn("Acme; Sons -- Ltd"), "EXECUTE",
            "tl_SearchCompany", {text("Acme; Sons -- Ltd")});
        row("tl_SearchContacts, no head",
            "tl_SearchContacts " + DBIn("a") + "," + n(5) + "," + DBIn("") + "," + n(7), "",
            "tl_SearchContacts", {text("a"), integer(5), text(""), integer(7)});
        row("tl_MyFriendsAdd", "EXECUTE tl_MyFriendsAdd 15,12", "EXECUTE", "tl_MyFriendsAdd",
            {integer(15), integer(12)});
        row("tl_MyFriendsRemove", "EXECUTE tl_MyFriendsRemove 15,12", "EXECUTE",
            "tl_MyFriendsRemove", {integer(15), integer(12)});
        row("tl_SetStatus with neither date nor comment",
            "EXEC tl_SetStatus 12,8,NULL,NULL,NULL,15", "EXEC", "tl_SetStatus",
            {integer(12), integer(8), null(), null(), null(), integer(15)});
        row("tl_SetStatus with all",
            "EXEC tl_SetStatus 12,8," + DBIn("01/02/2024 1:30 PM") + "," + DBIn("1:30 PM") + "," +
                DBIn("Lunch; don't wait\r\nback soon") + ",15",
            "EXEC", "tl_SetStatus",
            {integer(12), integer(8), text("01/02/2024 1:30 PM"), text("1:30 PM"),
             text("Lunch; don't wait\r\nback soon"), integer(15)});
        row("tl_GetContactInformation, no head", "tl_GetContactInformation 12", "",
            "tl_GetContactInformation", {integer(12)});
        row("tl_GetContactStatus", "EXEC tl_GetContactStatus 12", "EXEC", "tl_GetContactStatus",
            {integer(12)});
        row("tl_GetContactNotesUnread, two blanks", "EXEC tl_GetContactNotesUnread  5", "EXEC",
            "tl_GetContactNotesUnread", {integer(5)});
        row("tl_UpdateChatStatus on", "EXEC tl_UpdateChatStatus 12, 1", "EXEC",
            "tl_UpdateChatStatus", {integer(12), integer(1)});
        row("tl_UpdateChatStatus off", "EXEC tl_UpdateChatStatus 12, 0", "EXEC",
            "tl_UpdateChatStatus", {integer(12), integer(0)});
        row("tl_GetContactNotes, no head", "tl_GetContactNotes 12, NULL, NULL, 15", "",
            "tl_GetContactNotes", {integer(12), null(), null(), integer(15)});
        row("tl_SetNoteRead", "EXEC tl_SetNoteRead 15, 301", "EXEC", "tl_SetNoteRead",
            {integer(15), integer(301)});
        row("tl_DeleteNote", "EXEC tl_DeleteNote 301, 15", "EXEC", "tl_DeleteNote",
            {integer(301), integer(15)});
        row("tl_AddContactNote",
            "EXEC tl_AddContactNote 12," + DBIn("Call 'Bob' re: 50% /* not a comment */") + ",15,1",
            "EXEC", "tl_AddContactNote",
            {integer(12), text("Call 'Bob' re: 50% /* not a comment */"), integer(15), integer(1)});
        row("tl_SendEmail, five",
            "EXEC tl_SendEmail " + DBIn("a@x.org") + "," + DBIn("Note") + "," + DBIn("Hi\r\n") +
                "," + DBIn("b@x.org") + "," + DBIn("b@x.org"),
            "EXEC", "tl_SendEmail",
            {text("a@x.org"), text("Note"), text("Hi\r\n"), text("b@x.org"), text("b@x.org")});
        row("tl_SendEmail, password mail",
            "EXEC tl_SendEmail " + DBIn("a@x.org") + "," + DBIn("Pw") + "," + DBIn("Body") + "," +
                DBIn("b@x.org") + "," + DBIn("b@x.org") + "," + DBIn(" "),
            "EXEC", "tl_SendEmail",
            {text("a@x.org"), text("Pw"), text("Body"), text("b@x.org"), text("b@x.org"),
             text("")});
        row("tl_ForgotPassword, no head",
            "tl_ForgotPassword " + DBIn("ann@x.org") + "," + DBIn("O'Neil"), "",
            "tl_ForgotPassword", {text("ann@x.org"), text("O'Neil")});
        row("tl_VersionCheck", "EXECUTE tl_VersionCheck", "EXECUTE", "tl_VersionCheck", {});
        row("LogAnomaly",
            "EXECUTE LogAnomaly 'Unspecified error: Unspecified error'," + n(-2147467259) +
                ",'TLDataAccess:LoadADOFromWeb','tavlo 1.0.0',12,'','DESK-7'",
            "EXECUTE", "LogAnomaly",
            {text("Unspecified error: Unspecified error"), integer(-2147467259),
             text("TLDataAccess:LoadADOFromWeb"), text("tavlo 1.0.0"), integer(12), text(""),
             text("DESK-7")});
        row("lower-case keywords", "exec tl_x null,getdate()", "EXEC", "tl_x", {null(), now()});
        row("tabs and line breaks between tokens", "\r\n\tEXEC\ttl_x\n1\r\n,\t'a'  ", "EXEC",
            "tl_x", {integer(1), text("a")});
        row("64-bit limits", "tl_x -9223372036854775808,9223372036854775807", "", "tl_x",
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
                               "LoginDate, ComputerName,IPAddress,UserSys) VALUES (" +
                               n(4001) + "," + n(12) + ",'" + "tavlo v1.0.0" + "',getdate(),'" +
                               "DESK-7" + "','" + "192.168.1.20" + "'," + n(15) + ")";
        QString error;
        const auto in = StatementParser::parse(insert, &error);
        QVERIFY2(in, qPrintable(error));
        QCOMPARE(in->kind, Statement::Kind::SessionInsert);
        QVERIFY(in->procedure.isEmpty());
        QCOMPARE(describe(in->args),
                 describe({integer(4001), integer(12), text("tavlo v1.0.0"), now(), text("DESK-7"),
                           text("192.168.1.20"), integer(15)}));

        const auto out = StatementParser::parse(
            "UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = " + n(4001), &error);
        QVERIFY2(out, qPrintable(error));
        QCOMPARE(out->kind, Statement::Kind::SessionUpdate);
        QCOMPARE(describe(out->args), describe({integer(4001)}));
    }

    void anythingElseIsRefused_data() {
        QTest::addColumn<QString>("sql");
        const QString insert = "INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, "
                               "LoginDate, ComputerName,IPAddress,UserSys) VALUES ";
        QTest::newRow("empty") << "";
        QTest::newRow("blanks only") << " \r\n\t";
        QTest::newRow("injection through a name") << "EXEC LoginCheck 'x'; DROP TABLE x --','y'";
        QTest::newRow("quote injection") << "EXEC LoginCheck ''; DROP TABLE x --',''";
        QTest::newRow("stacked with a semicolon") << "EXEC tl_a 1; EXEC tl_b 2";
        QTest::newRow("stacked without") << "EXEC tl_a 1 EXEC tl_b 2";
        QTest::newRow("trailing semicolon") << "EXECUTE tl_VersionCheck;";
        QTest::newRow("line comment") << "EXEC tl_a 1 -- note";
        QTest::newRow("block comment") << "EXEC tl_a /* x */ 1";
        QTest::newRow("unbalanced quote") << "EXEC tl_a 'abc";
        QTest::newRow("quote doubled at the end") << "EXEC tl_a 'abc''";
        QTest::newRow("nested call") << "EXEC tl_a EXEC tl_b";
        QTest::newRow("call as argument") << "EXEC tl_a tl_b(1)";
        QTest::newRow("bare word argument") << "EXEC tl_a user";
        QTest::newRow("expression") << "EXEC tl_a 1+1";
        QTest::newRow("parenthesised") << "EXEC tl_a (1)";
        QTest::newRow("decimal number") << "EXEC tl_a 1.5";
        QTest::newRow("hex number") << "EXEC tl_a 0x10";
        QTest::newRow("too big") << "EXEC tl_a 9223372036854775808";
        QTest::newRow("too small") << "EXEC tl_a -9223372036854775809";
        QTest::newRow("far too big") << "EXEC tl_a " + QString(40, u'9');
        QTest::newRow("trailing comma") << "EXEC tl_a 1,";
        QTest::newRow("leading comma") << "EXEC tl_a ,1";
        QTest::newRow("empty argument") << "EXEC tl_a 1,,2";
        QTest::newRow("head without a name") << "EXEC";
        QTest::newRow("head twice") << "EXEC EXECUTE tl_a";
        QTest::newRow("reserved word as name") << "SHUTDOWN";
        QTest::newRow("select") << "SELECT * FROM Users";
        QTest::newRow("bracketed name") << "EXEC [tl_a] 1";
        QTest::newRow("owner-qualified name") << "EXEC dbo.tl_a 1";
        QTest::newRow("variable") << "EXEC tl_a @x";
        QTest::newRow("getdate without parentheses") << "EXEC tl_a getdate";
        QTest::newRow("N prefix") << "EXEC tl_a N'x'";
        QTest::newRow("double quotes") << "EXEC tl_a \"x\"";
        QTest::newRow("byte 0x80 outside quotes") << "EXEC tl_a\u0080 1";
        QTest::newRow("byte 0xA0 outside quotes") << "EXEC\u00A0tl_a 1";
        QTest::newRow("byte 0xFF in a name") << "EXEC tl_\u00FF 1";
        QTest::newRow("NUL outside quotes") << QString("EXEC tl_a 1") + QChar(0);
        QTest::newRow("NUL inside quotes") << QString("EXEC tl_a 'a") + QChar(0) + "b'";
        QTest::newRow("100 KB text")
            << "EXEC tl_AddContactNote 12,'" + QString(100000, u'x') + "',15,0";
        QTest::newRow("8001 characters in one text") << "EXEC tl_a '" + QString(8001, u'x') + "'";
        QTest::newRow("name of 129 characters") << "EXEC " + QString(129, u'a');
        QTest::newRow("other update")
            << "UPDATE Sessions SET LogoutDate = NULL WHERE SessionSys = 1";
        QTest::newRow("update without where") << "UPDATE Sessions SET LogoutDate = getdate()";
        QTest::newRow("update, two statements")
            << "UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = 1 DELETE Sessions";
        QTest::newRow("update other table")
            << "UPDATE Users SET LogoutDate = getdate() WHERE SessionSys = 1";
        QTest::newRow("update or")
            << "UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = 1 OR 1 = 1";
        QTest::newRow("insert, columns reordered")
            << "INSERT INTO Sessions (SalesmanSys, SessionSys, SessionDetails, LoginDate, "
               "ComputerName,IPAddress,UserSys) VALUES (1,2,'a',getdate(),'b','c',3)";
        QTest::newRow("insert, text for a number") << insert + "('1',2,'a',getdate(),'b','c',3)";
        QTest::newRow("insert, missing value") << insert + "(1,2,'a',getdate(),'b','c')";
        QTest::newRow("insert, two rows")
            << insert + "(1,2,'a',getdate(),'b','c',3),(4,5,'d',getdate(),'e','f',6)";
        QTest::newRow("insert, unescaped quote in a name")
            << insert + "(1,2,'a',getdate(),'Bob's PC','c',3)";
        QTest::newRow("insert into another table") << "INSERT INTO Users (SessionSys) VALUES (1)";
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
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("reason");
        QTest::newRow("comment") << "EXEC tl_a 1 --"
                                 << "comment";
        QTest::newRow("semicolon") << "EXEC tl_a 1;"
                                   << "semicolon";
        QTest::newRow("quote") << "EXEC tl_a 'x"
                               << "unbalanced quote";
        QTest::newRow("range") << "EXEC tl_a 99999999999999999999"
                               << "out of range";
        QTest::newRow("length") << QString(20000, u'x') << "longer than";
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
