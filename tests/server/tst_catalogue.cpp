#include "Rows.h"
#include "ServerClient.h"
#include "TavloServerProcess.h"
#include "store/Database.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>
#include <QtTest>
#include <map>
#include <set>
#include <thread>

namespace {

QStringList columnsOf(const wire::Recordset& rs) {
    QStringList names;
    for (const auto& column : rs.rowset().columns)
        names << column.name;
    return names;
}

QVariant field(const wire::Recordset& rs, const char* name) {
    return rs.Fields(QLatin1String(name)).Value();
}

// `release` options: a good set with the given ones changed (a null value leaves one out).
QStringList releaseOptions(const QList<std::pair<QString, QString>>& changes = {}) {
    QList<std::pair<QString, QString>> options = {{"version", "1.2.3"},
                                                  {"ftp-site", "127.0.0.1:2121"},
                                                  {"ftp-dir", "/"},
                                                  {"file", "tavlo-update-1.2.3.run"}};
    for (const auto& change : changes) {
        options.removeIf([&](const auto& option) { return option.first == change.first; });
        if (!change.second.isNull())
            options.append(change);
    }
    QStringList out;
    for (const auto& [name, value] : options)
        out << QStringLiteral("--") + name << value;
    return out;
}

// Column sets the client reads from each kind of answer.
const QStringList kStatusColumns = {"StatusSys", "Status", "ColorSys", "ColorCode",
                                    "StatusPictureLocation"};
const QStringList kContactColumns = {"FirstName",   "LastName",     "ContactSys",
                                     "UserSys",     "UserName",     "OrganizationSys",
                                     "Phone",       "Fax",          "Ext",
                                     "Position",    "EmailAddress", "ContactPictureLocation",
                                     "Pager",       "Cell",         "HomePhone",
                                     "HomeAddress", "HomeCity",     "HomeState",
                                     "HomeZip",     "HomeFax",      "HomeEMail",
                                     "HireDate",    "DateAdded",    "ToolTip",
                                     "ShowHomeInfo"};
const QStringList kBoardExtras = {"ChatStatus", "comment", "returningtext", "myfriend"};

void requireColumns(const wire::Recordset& rs, const QStringList& wanted) {
    const QStringList have = columnsOf(rs);
    for (const QString& name : wanted)
        QVERIFY2(have.contains(name),
                 qPrintable(name + QStringLiteral(" missing from ") + have.join(',')));
}

} // namespace

// Every statement the client sends, as it sends it, against a real server with demo data.
class TestCatalogue : public QObject {
    Q_OBJECT
    std::unique_ptr<TavloServerProcess> server;
    std::unique_ptr<ServerClient> client;
    std::unique_ptr<Database> db;

    qint64 scalar(const QString& sql, const QVariantList& values = {}) {
        QSqlQuery q = db->exec(sql, values);
        return q.next() ? q.value(0).toLongLong() : -1;
    }
    qsizetype refusalsLogged() { return server->log().count(QStringLiteral("refused from")); }
    std::map<QString, std::unique_ptr<ServerClient>> people;
    // A client signed in as the demo user, kept for the run.
    ServerClient& as(const QString& user) {
        auto& slot = people[user];
        if (!slot)
            slot = std::make_unique<ServerClient>(server->baseUrl(), user);
        return *slot;
    }

private slots:
    void initTestCase() {
        server = std::make_unique<TavloServerProcess>(
            TavloServerProcess::Data::Demo,
            QStringList{QStringLiteral("--helpdesk-mail"), QStringLiteral("HelpDesk@Tavlo.example"),
                        QStringLiteral("--chat-window"), QStringLiteral("9")});
        if (server->mayBeSkipped())
            QSKIP(qPrintable(server->failure()));
        QVERIFY2(server->started(), qPrintable(server->failure()));
        client = std::make_unique<ServerClient>(server->baseUrl(), QStringLiteral("ann"));
        db = std::make_unique<Database>(server->dbUrl());
    }
    void cleanupTestCase() {
        db.reset();
        server.reset();
    }

    void signIn_data() {
        columns<QString, int, int, int, int>("sql", "rows", "activeUser", "activeOrganization",
                                             "chatDisabled");
        row("good", "EXEC LoginCheck 'ann','demo'", 1, 1, 1, 0);
        row("name any case", "EXEC LoginCheck 'ANN','demo'", 1, 1, 1, 0);
        row("bad password", "EXEC LoginCheck 'ann','Demo'", 0, 0, 0, 0);
        row("empty", "EXEC LoginCheck '',''", 0, 0, 0, 0);
        row("quote", "EXEC LoginCheck 'o''brien','x'", 0, 0, 0, 0);
        row("removed", "EXEC LoginCheck 'dave','demo'", 1, 0, 1, 0);
        row("disabled organisation", "EXEC LoginCheck 'ivo','demo'", 1, 1, 0, 0);
        row("chat disabled", "EXEC LoginCheck 'hana','demo'", 1, 1, 1, 1);
    }
    void signIn() {
        auto [sql, rows] = fetch<QString, int>("sql", "rows");
        const auto rs = ServerClient(server->baseUrl()).read(sql);
        QVERIFY(rs);
        QCOMPARE(rs->RecordCount(), long(rows));
        if (rows == 0)
            return;
        auto [activeUser, activeOrganization, chatDisabled] =
            fetch<int, int, int>("activeUser", "activeOrganization", "chatDisabled");
        QCOMPARE(field(*rs, "ActiveUser").toInt(), activeUser);
        QCOMPARE(field(*rs, "ActiveOrganization").toInt(), activeOrganization);
        QCOMPARE(field(*rs, "ChatDisabled").toInt(), chatDisabled);
        requireColumns(*rs, {"ContactSys", "UserSys", "OrganizationLocationSys", "OrganizationSys",
                             "Name", "Description", "Address1", "FirstName", "LastName"});
    }

    void sessionsOpenAndClose() {
        const auto key = client->read(QStringLiteral("EXECUTE GetSysVB 'Session'"));
        QVERIFY(key && !key->Eof());
        const qint64 session = field(*key, "NextAvailableSys").toLongLong();
        QVERIFY(client->write(
            QStringLiteral(
                "INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, LoginDate, "
                "ComputerName,IPAddress,UserSys) VALUES (%1,1001,'tavlo v1.0.0',getdate(),'desk-7',"
                "'10.0.0.7',5001)")
                .arg(session)));
        QCOMPARE(scalar(QStringLiteral("SELECT COUNT(*) FROM sessions WHERE sessionsys = ? AND "
                                       "logoutdate IS NULL AND usersys = 5001"),
                        {session}),
                 1);
        QVERIFY(client->write(
            QStringLiteral("UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = %1")
                .arg(session)));
        QCOMPARE(scalar(QStringLiteral("SELECT COUNT(*) FROM sessions WHERE sessionsys = ? AND "
                                       "logoutdate IS NOT NULL"),
                        {session}),
                 1);
        // The sign-out ended the gateway session too.
        QVERIFY(client->refused(QStringLiteral("EXEC tl_GetContactStatus 1001"), 403));
        QVERIFY(client->signIn(QStringLiteral("ann")));
    }

    // Keys are reserved: many callers at once never get the same one.
    void keysAreReservedAtomically() {
        std::vector<qint64> keys(40, 0);
        std::vector<std::thread> callers;
        for (size_t i = 0; i < keys.size(); ++i)
            callers.emplace_back([&, i] {
                const auto rs = client->read(QStringLiteral("EXECUTE GetSysVB 'Note'"));
                keys[i] = rs && !rs->Eof() ? field(*rs, "NextAvailableSys").toLongLong() : 0;
            });
        for (auto& caller : callers)
            caller.join();
        const std::set<qint64> distinct(keys.begin(), keys.end());
        QCOMPARE(distinct.size(), keys.size());
        QVERIFY(*distinct.begin() > 3); // past the demo's notes
        const auto unknown = client->read(QStringLiteral("EXECUTE GetSysVB 'Nothing'"));
        QVERIFY(unknown && unknown->Eof());
    }

    // Each list the client reads, by whom: its size and one column of its first row ("NULL"
    // when empty or NULL); the board's lists carry every column the board shows.
    void lists_data() {
        columns<QString, QString, int, QString, QString>("user", "sql", "rows", "column", "first");
        row("statuses", "ann", "EXECUTE tl_GetAvailableStatuses 1,5001,1001", 8, "Status", "In");
        row("groups", "ann", "EXECUTE tl_GetOrganizationGroups 1", 3, "Name", "Engineering");
        row("locations", "ann", "EXECUTE tl_GetOrganizationLocations 1", 2, "LocationName",
            "Main Office");
        row("colours", "ann", "EXEC tl_GetAvailableColors 1,5001", 8, "ColorCode", "00C000");
        row("rights", "ann", "EXECUTE tl_GetUserSecurity 5001", 2, "SecurityObjectSys", "10000000");
        row("rights, none", "carol", "EXECUTE tl_GetUserSecurity 5003", 0, "SecurityObjectSys",
            "NULL");
        row("own organisation", "ann", "EXECUTE tl_GetCompanyList", 1, "OrganizationSys", "1");
        row("organisation search", "ann", "EXECUTE tl_SearchCompany '%'", 1, "OrganizationSys",
            "1");
        row("contact list", "ann", "EXECUTE tl_GetContactList 1", 40, "ContactSys", "1015");
        row("home shown", "ann", "tl_GetContactInformation 1001", 1, "HomeAddress",
            "10 Elm Street");
        row("home hidden", "ann", "tl_GetContactInformation 1002", 1, "HomeAddress", "NULL");
        row("board, all", "ann", "EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL", 40, "", "");
        row("board, group tab", "ann", "EXEC tl_GetUserStatuses 2,NULL,1,5001,NULL", 13, "", "");
        row("board, location", "ann", "EXEC tl_GetUserStatuses NULL,NULL,1,5001,2", 20, "", "");
        row("board, organisation from user", "ann",
            "EXEC tl_GetUserStatuses NULL,NULL,NULL,5001,NULL", 40, "", "");
        row("board, my friends", "ann", "EXEC tl_GetMyFriendsList 5001,1", 4, "", "");
        row("board, company", "ann", "EXEC tl_GetCompanyList 5001", 40, "", "");
        row("search by name", "ann", "tl_SearchContacts 'lee%',1,'',5001", 1, "", "");
        row("search by extension", "ann", "tl_SearchContacts '',NULL,'205%',5001", 1, "", "");
        row("search, no hit", "ann", "tl_SearchContacts 'zzz%',1,'',5001", 0, "", "");
    }
    void lists() {
        auto [user, sql, rows, column, first] = fetch<QString, QString, int, QString, QString>(
            "user", "sql", "rows", "column", "first");
        const auto rs = as(user).read(sql);
        QVERIFY(rs);
        QCOMPARE(rs->RecordCount(), long(rows));
        if (column.isEmpty())
            return requireColumns(*rs, kContactColumns + kStatusColumns + kBoardExtras);
        const QVariant value = rs->Eof() ? QVariant() : rs->Fields(column).Value();
        QCOMPARE(value.isValid() ? value.toString() : QStringLiteral("NULL"), first);
    }

    // A name that another organisation has too: the search keeps to the one it names.
    void searchKeepsToTheOrganisation() {
        db->exec(QStringLiteral("INSERT INTO contact (contactsys, organizationsys, firstname, "
                                "lastname) VALUES (1999, 2, 'Zed', 'Lee')"));
        const auto rs = client->read(QStringLiteral("tl_SearchContacts 'LEE%',1,'',5001"));
        db->exec(QStringLiteral("DELETE FROM contact WHERE contactsys = 1999"));
        QVERIFY(rs);
        QCOMPARE(rs->RecordCount(), 1L);
        QCOMPARE(field(*rs, "OrganizationSys").toInt(), 1);
    }

    // A status set is what the board, one person's row and the poll read back.
    void statusSetIsReadBack() {
        QVERIFY(as("bob").write(QStringLiteral(
            "EXEC tl_SetStatus 1003,8,'11/20/2026 5:30 PM','5:30 PM','Client''s office',5002")));
        auto row = client->read(QStringLiteral("EXECUTE tl_GetUserStatuses NULL,1003"));
        QVERIFY(row && !row->Eof());
        requireColumns(*row, kStatusColumns + kContactColumns +
                                 QStringList{"comment", "returningtext", "myfriend"});
        QCOMPARE(field(*row, "StatusSys").toInt(), 8);
        QCOMPARE(field(*row, "returningtext").toString(), QStringLiteral("11/20/2026 5:30 PM"));
        QCOMPARE(field(*row, "comment").toString(), QStringLiteral("Client's office"));
        const auto poll = client->read(QStringLiteral("EXEC tl_GetContactStatus 1003"));
        QVERIFY(poll && !poll->Eof());
        requireColumns(*poll, kStatusColumns + QStringList{"comment"});
        QCOMPARE(field(*poll, "Status").toString(), QStringLiteral("Out"));
        QCOMPARE(scalar(QStringLiteral("SELECT statussetby FROM contact WHERE contactsys = 1003")),
                 5002);

        QVERIFY(client->write(QStringLiteral("EXEC tl_SetStatus 1003,6,NULL,NULL,NULL,5001")));
        row = client->read(QStringLiteral("EXEC tl_GetUserStatuses NULL,1003,1,NULL"));
        QVERIFY(row && !row->Eof());
        QCOMPARE(field(*row, "StatusSys").toInt(), 6);
        row = client->read(QStringLiteral("EXECUTE tl_GetUserStatuses NULL,1003"));
        QCOMPARE(field(*row, "returningtext").toString(), QStringLiteral("01/01/00 12:00AM"));
        QVERIFY(!field(*row, "comment").isValid());
    }

    void friendsByContactAndByUser() {
        ServerClient& carol = as("carol");
        auto count = [&] {
            return carol.read(QStringLiteral("EXEC tl_GetMyFriendsList 5003,1"))->RecordCount();
        };
        QCOMPARE(count(), 0L);
        QVERIFY(carol.write(QStringLiteral("EXECUTE tl_MyFriendsAdd 5003,1010"))); // a contact
        QVERIFY(carol.write(QStringLiteral("EXECUTE tl_MyFriendsAdd 5003,5002"))); // a user: bob
        QVERIFY(carol.write(QStringLiteral("EXECUTE tl_MyFriendsAdd 5003,1010"))); // twice: once
        QCOMPARE(count(), 2L);
        const auto board =
            carol.read(QStringLiteral("EXEC tl_GetUserStatuses NULL,1002,1,5003,NULL"));
        QCOMPARE(field(*board, "myfriend").toInt(), 1);
        // The whole board is made once for everyone: each reader still sees their own friends.
        auto marked = [&](ServerClient& reader, int user) {
            auto rs = reader.read(
                QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,%1,NULL").arg(user));
            QList<qint64> contacts;
            for (; rs && !rs->Eof(); rs->MoveNext())
                if (field(*rs, "myfriend").toInt() == 1)
                    contacts << field(*rs, "ContactSys").toLongLong();
            std::sort(contacts.begin(), contacts.end());
            return contacts;
        };
        auto stored = [&](int user) {
            QList<qint64> contacts;
            QSqlQuery q = db->exec(
                QStringLiteral("SELECT contactsys FROM friend WHERE usersys = ? ORDER BY 1"),
                {user});
            while (q.next())
                contacts << q.value(0).toLongLong();
            return contacts;
        };
        for (const auto& [reader, user] :
             {std::pair{&as("ann"), 5001}, {&carol, 5003}, {&as("ann"), 5001}, {&as("bob"), 5002}})
            QCOMPARE(marked(*reader, user), stored(user));
        QVERIFY(carol.write(QStringLiteral("EXECUTE tl_MyFriendsRemove 5003,1010")));
        QCOMPARE(count(), 1L);
    }

    void noteLifecycle() {
        ServerClient& erin = as("erin");
        auto unread = [&] {
            return field(*erin.read(QStringLiteral("EXEC tl_GetContactNotesUnread  1005")),
                         "NoteCount")
                .toInt();
        };
        QCOMPARE(unread(), 0);
        QVERIFY(client->write(
            QStringLiteral("EXEC tl_AddContactNote 1005,'See me, it''s urgent',5001,0")));
        QCOMPARE(unread(), 1);
        auto notes = erin.read(QStringLiteral("tl_GetContactNotes 1005, NULL, NULL, 5005"));
        QVERIFY(notes && notes->RecordCount() == 1);
        requireColumns(*notes, {"NoteSys", "DateEntered", "EnteredBySys", "EnteredByName",
                                "NoteText", "DateRead"});
        QCOMPARE(field(*notes, "NoteText").toString(), QStringLiteral("See me, it's urgent"));
        QCOMPARE(field(*notes, "EnteredByName").toString(), QStringLiteral("Ann Lee"));
        const qint64 note = field(*notes, "NoteSys").toLongLong();
        QVERIFY(erin.write(QStringLiteral("EXEC tl_SetNoteRead 5005, %1").arg(note)));
        QCOMPARE(unread(), 0);
        notes = erin.read(QStringLiteral("tl_GetContactNotes 1005, NULL, NULL, 5005"));
        QVERIFY(!field(*notes, "DateRead").toString().isEmpty());
        QVERIFY(erin.write(QStringLiteral("EXEC tl_DeleteNote %1, 5005").arg(note)));
        QCOMPARE(
            erin.read(QStringLiteral("tl_GetContactNotes 1005, NULL, NULL, 5005"))->RecordCount(),
            0L);
    }

    // Only the receiver (ann, 5001) marks her notes read or deletes them; the rest is refused
    // and changes nothing.
    void notesActOnlyForTheirReceiver_data() {
        columns<QString, QString, QString>("user", "sql", "logged");
        row("its author marks read", "bob", "EXEC tl_SetNoteRead 5002, 1",
            "user 5002 is not the receiver of note 1");
        row("colleague deletes", "carol", "EXEC tl_DeleteNote 1, 5003",
            "user 5003 is not the receiver of note 1");
        row("private, colleague deletes", "bob", "EXEC tl_DeleteNote 2, 5002",
            "user 5002 is not the receiver of note 2");
        row("no such note, read", "ann", "EXEC tl_SetNoteRead 5001, 999",
            "user 5001 is not the receiver of note 999");
        row("no such note, delete", "ann", "EXEC tl_DeleteNote 999, 5001",
            "user 5001 is not the receiver of note 999");
        row("as another user", "bob", "EXEC tl_DeleteNote 1, 5001",
            "names a user other than the signed-in one");
    }
    void notesActOnlyForTheirReceiver() {
        auto [user, sql, logged] = fetch<QString, QString, QString>("user", "sql", "logged");
        ServerClient& who = as(user);
        const QString before = db->dump();
        QVERIFY(who.refused(sql, 403));
        QCOMPARE(db->dump(), before);
        QTRY_VERIFY(server->log().contains(logged));
    }

    // Ann's note 2 is private: listed for her alone.
    // Others can't read her notes at all.
    void privateNotesOnlyForTheirReceiver_data() {
        columns<QString, QString, int, bool>("user", "asker", "rows",
                                             "listsPrivate"); // -1: refused
        row("receiver", "ann", "5001", 3, true);
        row("receiver, no user", "ann", "NULL", 2, false);
        row("its author", "carol", "5003", -1, false);
        row("colleague", "bob", "5002", -1, false);
    }
    void privateNotesOnlyForTheirReceiver() {
        auto [user, asker, rows, listsPrivate] =
            fetch<QString, QString, int, bool>("user", "asker", "rows", "listsPrivate");
        const QString sql = QStringLiteral("tl_GetContactNotes 1001, NULL, NULL, ") + asker;
        if (rows < 0) {
            QVERIFY(as(user).refused(sql, 403));
            return;
        }
        auto notes = as(user).read(sql);
        QVERIFY(notes);
        QCOMPARE(notes->RecordCount(), long(rows));
        bool listed = false;
        for (; !notes->Eof(); notes->MoveNext())
            listed |= field(*notes, "NoteSys").toInt() == 2;
        QCOMPARE(listed, listsPrivate);
    }

    // The board shows a colleague on chat while the heartbeat keeps coming, and off once it
    // stops, as when the client crashed (this server's window is 9 s). A heartbeat that
    // changes nothing writes nothing: no row, no commit.
    void chatStatusFollowsTheHeartbeat() {
        auto boardFlag = [&] {
            const auto rs =
                client->read(QStringLiteral("EXEC tl_GetUserStatuses NULL,1002,1,5001,NULL"));
            return rs ? field(*rs, "ChatStatus").toInt() : -1;
        };
        ServerClient& bob = as("bob");
        QVERIFY(bob.write(QStringLiteral("EXEC tl_UpdateChatStatus 1002, 1")));
        QCOMPARE(boardFlag(), 1);
        const QString before = db->dump();
        const qint64 commits = db->isPostgres() ? 0 : scalar(QStringLiteral("PRAGMA data_version"));
        QVERIFY(bob.write(QStringLiteral("EXEC tl_UpdateChatStatus 1002, 1")));
        QCOMPARE(db->dump(), before);
        if (!db->isPostgres())
            QCOMPARE(scalar(QStringLiteral("PRAGMA data_version")), commits);
        QCOMPARE(boardFlag(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(boardFlag(), 0, 15000);
        QVERIFY(bob.write(QStringLiteral("EXEC tl_UpdateChatStatus 1002, 1")));
        QCOMPARE(boardFlag(), 1);
        QVERIFY(bob.write(QStringLiteral("EXEC tl_UpdateChatStatus 1002, 0")));
        QCOMPARE(boardFlag(), 0);
    }

    void reportsAndMail() {
        QVERIFY(client->write(
            QStringLiteral("EXECUTE LogAnomaly 'Load failed: x',91,'frmTLView:LoadGrid','tavlo "
                           "1.0.0',1001,'','desk-7'")));
        QVERIFY(server->run({QStringLiteral("anomalies")})
                    .contains(QStringLiteral("frmTLView:LoadGrid")));
        QVERIFY(client->write(QStringLiteral("EXEC tl_SendEmail 'bob@demo.example','Hello','Body "
                                             "text','ann@demo.example','ann@demo.example'")));
        QVERIFY(server->run({QStringLiteral("outbox")})
                    .contains(QStringLiteral("bob@demo.example\tHello")));
    }

    // Mail goes to one of the people or to the help desk (set as HelpDesk@Tavlo.example), with
    // no line breaks in its headers; anything else is refused and nothing is queued.
    void sendEmail_data() {
        columns<QString, QString, QString, int>("to", "subject", "from", "status"); // 200: queued
        const QString ann = QStringLiteral("ann@demo.example");
        const QString bob = QStringLiteral("bob@demo.example");
        row("a person", bob, "Hi", ann, 200);
        row("any case, blanks", " Carol@Demo.EXAMPLE ", "Hi", ann, 200);
        row("help desk", "helpdesk@tavlo.example", "Hi", ann, 200);
        row("outside", "someone@elsewhere.example", "Hi", ann, 403);
        row("help desk's domain", "other@tavlo.example", "Hi", ann, 403);
        row("a person's home address", "bob@home.example", "Hi", ann, 403);
        row("another organisation's", "hana@harbour.example", "Hi", ann, 403);
        row("empty", "", "Hi", ann, 403);
        row("two, comma", "bob@demo.example,carol@demo.example", "Hi", ann, 403);
        row("two, semicolon", "bob@demo.example; x@elsewhere.example", "Hi", ann, 403);
        row("CR LF in subject", bob, "Hi\r\nBcc: x@elsewhere.example", ann, 403);
        row("LF in to", bob + "\nBcc: x@elsewhere.example", "Hi", ann, 403);
        row("LF in from", bob, "Hi", ann + "\nBcc: x@elsewhere.example", 403);
        row("NUL in to (grammar)", bob + QChar(0), "Hi", ann, 400);
    }
    void sendEmail() {
        auto [to, subject, from, status] =
            fetch<QString, QString, QString, int>("to", "subject", "from", "status");
        const QString sql =
            QStringLiteral("EXEC tl_SendEmail '%1','%2','Body','%3','%3'").arg(to, subject, from);
        const QString count = QStringLiteral("SELECT COUNT(*) FROM outbox");
        const qint64 queued = scalar(count);
        if (status != 200) {
            const qsizetype logged = refusalsLogged();
            QVERIFY(client->refused(sql, status));
            QTRY_VERIFY(refusalsLogged() > logged);
            QCOMPARE(scalar(count), queued);
            return;
        }
        QVERIFY(client->write(sql));
        QCOMPARE(scalar(count), queued + 1);
        QSqlQuery last =
            db->exec(QStringLiteral("SELECT mailto FROM outbox ORDER BY mailsys DESC"));
        QVERIFY(last.next());
        QCOMPARE(last.value(0).toString(), to.trimmed());
    }

    // `release` names what tl_VersionCheck answers next; bad input is refused (exit 2, the
    // reason on the error output) and nothing is written.
    void release_data() {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("refusal");    // empty: accepted
        QTest::addColumn<QStringList>("signIn"); // user, password, SHA-256 (NULL when not set)
        const QString sha = QStringLiteral("0123456789ABCDEF").repeated(4);
        const QString none;
        QTest::newRow("anonymous")
            << releaseOptions() << "" << QStringList{"anonymous", "", "NULL"};
        QTest::newRow("user, password, sha256")
            << releaseOptions({{"ftp-user", "update"}, {"ftp-password", "s3cret"}, {"sha256", sha}})
            << "" << QStringList{"update", "s3cret", sha.toLower()};
        const auto refused = [&](const char* name, QList<std::pair<QString, QString>> changes,
                                 const char* reason) {
            QTest::newRow(name) << releaseOptions(changes) << reason << QStringList();
        };
        refused("two parts", {{"version", "1.2"}}, "--version takes");
        refused("four parts", {{"version", "1.2.3.4"}}, "--version takes");
        refused("negative", {{"version", "1.-2.3"}}, "--version takes");
        refused("over 32767", {{"version", "1.32768.0"}}, "--version takes");
        refused("no version", {{"version", none}}, "--version takes");
        refused("no site", {{"ftp-site", none}}, "--ftp-site takes");
        refused("site as URL", {{"ftp-site", "ftp://example.org"}}, "--ftp-site takes");
        refused("port 0", {{"ftp-site", "example.org:0"}}, "--ftp-site takes");
        refused("IPv6 unbracketed", {{"ftp-site", "::1:2121"}}, "--ftp-site takes");
        refused("no file", {{"file", none}}, "--file takes");
        refused("file with folder", {{"file", "updates/x.run"}}, "--file takes");
        refused("sha256 short", {{"sha256", sha.left(63)}}, "--sha256 takes");
        refused("sha256 not hex", {{"sha256", sha.left(63) + 'g'}}, "--sha256 takes");
        refused("user alone", {{"ftp-user", "update"}}, "go together");
        refused("password alone", {{"ftp-password", "s3cret"}}, "go together");
    }
    void release() {
        auto [options, refusal, signIn] =
            fetch<QStringList, QString, QStringList>("options", "refusal", "signIn");
        const QString before = db->dump();
        int exitCode = -1;
        const QString output =
            server->run(QStringList{QStringLiteral("release")} + options, &exitCode);
        if (!refusal.isEmpty()) {
            QCOMPARE(exitCode, 2);
            QVERIFY2(output.contains(refusal), qPrintable(output));
            QCOMPARE(db->dump(), before);
            return;
        }
        QVERIFY2(exitCode == 0, qPrintable(output));
        const auto rs = client->read(QStringLiteral("EXECUTE tl_VersionCheck"));
        QVERIFY(rs && rs->RecordCount() > 1);
        const auto text = [&](const char* name) {
            const QVariant value = field(*rs, name);
            return value.isValid() ? value.toString() : QStringLiteral("NULL");
        };
        QCOMPARE(text("VersionString"), QStringLiteral("1.2.3"));
        QCOMPARE(QStringList({text("VersionMajor"), text("VersionMinor"), text("VersionRevision")}),
                 QStringList({"1", "2", "3"}));
        QCOMPARE(QStringList({text("FTPSite"), text("FTPDirectory"), text("FTPUpdateFileName")}),
                 QStringList({"127.0.0.1:2121", "/", "tavlo-update-1.2.3.run"}));
        QCOMPARE(QStringList({text("FTPUserName"), text("FTPPassword"), text("UpdateSha256")}),
                 signIn);
    }
};

QTEST_GUILESS_MAIN(TestCatalogue)
#include "tst_catalogue.moc"
