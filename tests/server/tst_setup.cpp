#include "Rows.h"
#include "ServerClient.h"
#include "TavloServerProcess.h"
#include "store/Database.h"
#include <QRegularExpression>
#include <QtTest>

// An office set up from a fresh store by command, without SQL: an organisation, people from
// a CSV file and one by one, who then sign in with the client and show on the board; bad input
// changes nothing; the history names who changed a status.
class TestSetup : public QObject {
    Q_OBJECT
    std::unique_ptr<TavloServerProcess> server;
    QTemporaryDir files;
    QString annUser, annPassword; // a signed-in reader of the board

    QString dump() {
        Database db(server->dbUrl());
        return db.dump();
    }

    // Runs a command; fails the test unless it exits as expected.
    QString run(const QStringList& arguments, int expectedExit) {
        int exit = -1;
        const QString out = server->run(arguments, &exit);
        if (exit != expectedExit)
            qWarning().noquote() << arguments.join(' ') << "exited" << exit << ":" << out;
        return exit == expectedExit ? out : QStringLiteral("exit %1").arg(exit);
    }

    QString writeFile(const char* name, const QByteArray& text) {
        QFile file(files.filePath(QLatin1String(name)));
        file.open(QIODevice::WriteOnly);
        file.write(text);
        return file.fileName();
    }

    // The rows of the organisation's board as "user: status".
    QStringList board(const ServerClient& client, const QString& userSys) {
        auto rs =
            client.read(QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,%1,NULL").arg(userSys));
        QStringList out;
        for (; rs && !rs->Eof(); rs->MoveNext())
            out << rs->Fields(QStringLiteral("UserName")).Value().toString() +
                       QStringLiteral(": ") +
                       rs->Fields(QStringLiteral("Status")).Value().toString();
        return out;
    }

    static QString captured(const QString& text, const char* pattern) {
        return QRegularExpression(QLatin1String(pattern)).match(text).captured(1);
    }

private slots:
    void initTestCase() {
        server = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Empty);
        if (server->mayBeSkipped())
            QSKIP(qPrintable(server->failure()));
        QVERIFY2(server->started(), qPrintable(server->failure()));
        QVERIFY(run({"org", "add", "Acme Ltd"}, 0).contains("added organisation 'Acme Ltd' (1)"));
        QVERIFY(
            run({"group", "add", "Sales", "--org", "acme ltd"}, 0).contains("added group 'Sales'"));
        QVERIFY(run({"location", "add", "Harbour", "--org", "1"}, 0).contains("added location"));
        QVERIFY(run({"status", "add", "At Lunch", "--org", "Acme Ltd", "--color", "#ff8000",
                     "--order", "4"},
                    0)
                    .contains("): #FF8000, order 4"));
    }

    void anImportWithABadRowImportsNobodyUntilMended() {
        const QByteArray header = "email,Last Name,first,user,group,admin\n";
        const QString bad =
            writeFile("bad.csv", header + "carl@acme.example,\"Doe, Jr\",Carl,carl,Sales,no\n"
                                          "dan-at-acme,Doe,Dan,dan,Sales,yes\n"
                                          "\"eve@acme.example\",\"O\"\"Neil\",Eve,eve,,\n");
        const QString before = dump();
        const QString refused = run({"person", "import", bad, "--org", "Acme Ltd"}, 2);
        QVERIFY2(refused.contains("nobody imported; the rows to mend:\nline 3: e-mail address "
                                  "'dan-at-acme' isn't one address, as in ann@example.org\n"),
                 qPrintable(refused));
        QCOMPARE(dump(), before);

        const QString mended =
            writeFile("mended.csv", header + "carl@acme.example,\"Doe, Jr\",Carl,carl,Sales,no\n"
                                             "dan@acme.example,Doe,Dan,dan,Sales,yes\n"
                                             "\"eve@acme.example\",\"O\"\"Neil\",Eve,eve,,\n");
        const QString done = run({"person", "import", mended, "--org", "Acme Ltd"}, 0);
        QVERIFY2(done.contains("imported 3 people"), qPrintable(done));
        QCOMPARE(done.count("first password: "), 3);
        const ServerClient eve(server->baseUrl());
        QVERIFY(eve.signIn("eve", captured(done, "added eve \\([^)]*\\); first password: (\\S+)")));
    }

    void aPersonAddedByCommandSignsInAndShowsOnTheBoard() {
        const QString out = run({"person", "add", "--org", "Acme Ltd", "--first", "Ann", "--last",
                                 "Lee", "--user", "ann", "--email", "ann@acme.example", "--ext",
                                 "204", "--group", "Sales", "--location", "Harbour"},
                                0);
        annUser = captured(out, "user (\\d+)\\)");
        annPassword = captured(out, "first password: (\\S+)");
        QVERIFY2(!annUser.isEmpty() && annPassword.size() == 12, qPrintable(out));
        const ServerClient ann(server->baseUrl());
        QVERIFY(!ann.signIn("ann", "wrong"));
        QVERIFY(ann.signIn("ann", annPassword));
        QCOMPARE(board(ann, annUser), QStringList({"dan: In", "carl: In", "ann: In", "eve: In"}));
    }

    void badInputExitsTwoAndChangesNothing_data() {
        columns<QStringList, QString>("arguments", "message");
        const auto args = [](const char* text) { return QString::fromLatin1(text).split(' '); };
        row("taken organisation", QStringList{"org", "add", "ACME LTD"},
            "there is an organisation named 'ACME LTD' already");
        row("unknown organisation", args("group add Sales2 --org Nowhere"),
            "there is no organisation 'Nowhere'");
        row("group twice", args("group add sales --org 1"), "there is a group 'sales' already");
        row("empty location", QStringList{"location", "add", " ", "--org", "1"},
            "the location's name is empty");
        row("colour without #", args("status add Away --org 1 --color FF8000 --order 2"),
            "colour 'FF8000' isn't #RRGGBB");
        row("order out of range", args("status add Away --org 1 --color #FF8000 --order 0"),
            "--order takes a whole number from 1 to 1000");
        row("status twice", args("status add in --org 1 --color #FF8000 --order 2"),
            "there is a status 'in' already");
        row("user name taken",
            args("person add --org 1 --first A --last B --user CARL --email a@b.example"),
            "user name 'CARL' is taken");
        row("bad user name",
            args("person add --org 1 --first A --last B --user a/b --email a@b.example"),
            "user name 'a/b' isn't 1 to 50 letters");
        row("no last name", args("person add --org 1 --first A --user ab --email a@b.example"),
            "the last name is empty");
        row("two addresses",
            args("person add --org 1 --first A --last B --user ab --email a@b.example,c@d.example"),
            "isn't one address");
        row("unknown group",
            args(
                "person add --org 1 --first A --last B --user ab --email a@b.example --group Nope"),
            "there is no group 'Nope'");
        row("unknown location",
            args("person add --org 1 --first A --last B --user ab --email a@b.example --location "
                 "Moon"),
            "there is no location 'Moon'");
        row("disable nobody", args("person disable nobody"), "there is no user 'nobody'");
        row("missing file", args("person import /nonexistent.csv --org 1"),
            "can't read '/nonexistent.csv'");
        row("unknown option", args("org add X --colour red"), "Unknown option 'colour'");
        row("unknown command", args("org rename X"), "unknown command: org rename X");
        row("history too long", args("history --days 401"),
            "--days takes a whole number from 1 to 400");
    }
    void badInputExitsTwoAndChangesNothing() {
        auto [arguments, message] = fetch<QStringList, QString>("arguments", "message");
        const QString before = dump();
        const QString out = run(arguments, 2);
        QVERIFY2(out.contains(message), qPrintable(out));
        QCOMPARE(dump(), before);
    }

    void theHistoryNamesWhoChangedAStatus() {
        const QString out = run({"person", "add", "--org", "1", "--first", "Bo", "--last", "Ek",
                                 "--user", "bo", "--email", "bo@acme.example"},
                                0);
        const QString contact = captured(out, "contact (\\d+)");
        const QString userSys = captured(out, "user (\\d+)\\)");
        const ServerClient bo(server->baseUrl());
        QVERIFY(bo.signIn("bo", captured(out, "first password: (\\S+)")));
        QVERIFY(bo.write(
            QStringLiteral("EXEC tl_SetStatus %1,8,NULL,NULL,'Dentist',%2").arg(contact, userSys)));
        const QString history = run({"history", "--days", "1"}, 0);
        QVERIFY2(history.contains("\tBo Ek (bo)\tBo Ek\tIn\tOut - Dentist\tclient\n"),
                 qPrintable(history));

        // Disabled: the password is still checked, the account answers as inactive; removed:
        // gone from the board, a disabled person stays (without an account).
        QVERIFY(run({"person", "disable", "bo"}, 0).contains("disabled bo"));
        const auto signIn = bo.read(QStringLiteral("EXEC LoginCheck 'bo','%1'")
                                        .arg(captured(out, "first password: (\\S+)")));
        QVERIFY(signIn && signIn->RecordCount() == 1);
        QCOMPARE(signIn->Fields(QStringLiteral("ActiveUser")).Value().toInt(), 0);
        QVERIFY(run({"person", "remove", "eve"}, 0).contains("removed eve from the board"));
        const ServerClient ann(server->baseUrl(), QStringLiteral("ann"), annPassword);
        QCOMPARE(board(ann, annUser), QStringList({"dan: In", "carl: In", ": Out", "ann: In"}));
        QVERIFY(run({"history"}, 0).contains("\tBo Ek (bo)\tBo Ek\tIn\tOut - Dentist\tclient\n"));
    }
};

QTEST_MAIN(TestSetup)
#include "tst_setup.moc"
