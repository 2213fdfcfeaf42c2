#include "Rows.h"
#include "ServerClient.h"
#include "TavloServerProcess.h"
#include "store/Database.h"
#include <QRegularExpression>
#include <QtTest>

namespace {

QStringList args(const QString& text) {
    return text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

// A good release and a good person; an option given again stands instead.
const QString kRelease = QStringLiteral(
    "release --version 1.2.3 --ftp-site 127.0.0.1:2121 --ftp-dir / --file tavlo-update-1.2.3.run ");
const QString kPerson =
    QStringLiteral("person add --org 1 --first A --last B --user ab --email a@b.example ");
const QString kSha = QStringLiteral("0123456789ABCDEF").repeated(4);

QString captured(const QString& text, const char* pattern) {
    return QRegularExpression(QLatin1String(pattern)).match(text).captured(1);
}

} // namespace

// An office set up from a fresh store by command, without SQL: an organisation, people from
// a CSV file and one by one, who then sign in with the client and show on the board; bad input
// changes nothing; the history names who changed a status.
class TestSetup : public QObject {
    Q_OBJECT
    std::unique_ptr<TavloServerProcess> server;
    QTemporaryDir files;
    QString carlPassword;

    QString dump() { return Database(server->dbUrl()).dump(); }

    // Runs a command; fails the test unless it exits as expected.
    QString run(const QStringList& arguments, int expectedExit = 0) {
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
        auto rs = client.read("EXEC tl_GetUserStatuses NULL,NULL,1," + userSys + ",NULL");
        QStringList out;
        for (; rs && !rs->Eof(); rs->MoveNext())
            out << rs->Fields("UserName").Value().toString() + ": " +
                       rs->Fields("Status").Value().toString();
        return out;
    }

private slots:
    void initTestCase() {
        server = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Empty);
        if (server->mayBeSkipped())
            QSKIP(qPrintable(server->failure()));
        QVERIFY2(server->started(), qPrintable(server->failure()));
        QVERIFY(run({"org", "add", "Acme Ltd"}).contains("added organisation 'Acme Ltd' (1)"));
        QVERIFY(
            run({"group", "add", "Sales", "--org", "acme ltd"}).contains("added group 'Sales'"));
        QVERIFY(run(args("location add Harbour --org 1")).contains("added location"));
        QVERIFY(run({"status", "add", "At Lunch", "--org", "Acme Ltd", "--color", "#ff8000",
                     "--order", "4"})
                    .contains("): #FF8000, order 4"));
    }

    void anImportWithABadRowImportsNobodyUntilMended() {
        const QByteArray people = "email,Last Name,first,user,group,admin\n"
                                  "carl@acme.example,\"Doe, Jr\",Carl,carl,Sales,no\n"
                                  "dan-at-acme,Doe,Dan,dan,Sales,yes\n"
                                  "\"eve@acme.example\",\"O\"\"Neil\",Eve,eve,,\n";
        const QString before = dump();
        const QString refused =
            run({"person", "import", writeFile("bad.csv", people), "--org", "Acme Ltd"}, 2);
        QVERIFY2(refused.contains("nobody imported; the rows to mend:\nline 3: e-mail address "
                                  "'dan-at-acme' isn't one address, as in ann@example.org\n"),
                 qPrintable(refused));
        QCOMPARE(dump(), before);

        const QString mended =
            writeFile("mended.csv", QByteArray(people).replace("dan-at-acme", "dan@acme.example"));
        const QString done = run({"person", "import", mended, "--org", "Acme Ltd"});
        QVERIFY2(done.contains("imported 3 people"), qPrintable(done));
        QCOMPARE(done.count("first password: "), 3);
        const ServerClient eve(server->baseUrl());
        QVERIFY(eve.signIn("eve", captured(done, "added eve \\([^)]*\\); first password: (\\S+)")));
        carlPassword = captured(done, "added carl \\([^)]*\\); first password: (\\S+)");
    }

    // A person added one by one signs in and shows on the board; her own status change is in the
    // history with who made it. Disabled, a person's password is still checked and the account
    // answers as inactive, and he stays on the board without an account; removed, gone from it.
    void aPersonAddedByCommandSignsInAndShowsOnTheBoard() {
        const QString out =
            run(args("person add --org 1 --first Ann --last Lee --user ann --email "
                     "ann@acme.example --ext 204 --group Sales --location Harbour"));
        const QString contact = captured(out, "contact (\\d+)");
        const QString user = captured(out, "user (\\d+)\\)");
        const QString password = captured(out, "first password: (\\S+)");
        QVERIFY2(!user.isEmpty() && password.size() == 12, qPrintable(out));
        const ServerClient ann(server->baseUrl());
        QVERIFY(!ann.signIn("ann", "wrong"));
        QVERIFY(ann.signIn("ann", password));
        QCOMPARE(board(ann, user), QStringList({"dan: In", "carl: In", "ann: In", "eve: In"}));

        QVERIFY(ann.write("EXEC tl_SetStatus " + contact + ",8,NULL,NULL,'Dentist'," + user));
        const QString change = "\tAnn Lee (ann)\tAnn Lee\tIn\tOut - Dentist\tclient\n";
        const QString history = run(args("history --days 1"));
        QVERIFY2(history.contains(change), qPrintable(history));
        QVERIFY(run(args("person disable carl")).contains("disabled carl"));
        const auto carl =
            ServerClient(server->baseUrl()).read("EXEC LoginCheck 'carl','" + carlPassword + "'");
        QVERIFY(carl && carl->RecordCount() == 1);
        QCOMPARE(carl->Fields("ActiveUser").Value().toInt(), 0);
        QVERIFY(run(args("person remove eve")).contains("removed eve from the board"));
        QCOMPARE(board(ann, user), QStringList({"dan: In", ": In", "ann: Out"}));
        QVERIFY(run({"history"}).contains(change));
    }

    // `release` names what tl_VersionCheck answers next, to anyone: where the update file is, and
    // the FTP user, password and SHA-256 (NULL when not given).
    void aReleaseIsWhatTheVersionCheckNames_data() {
        columns<QString, QString>("options", "signIn");
        row("anonymous", "", "anonymous  NULL");
        row("signed in", "--ftp-user update --ftp-password s3cret --sha256 " + kSha,
            "update s3cret " + kSha.toLower());
    }
    void aReleaseIsWhatTheVersionCheckNames() {
        auto [options, signIn] = fetch<QString, QString>("options", "signIn");
        QVERIFY(run(args(kRelease + options)).contains("release 1.2.3 added"));
        const auto rs = ServerClient(server->baseUrl()).read("EXECUTE tl_VersionCheck");
        QVERIFY(rs && !rs->Eof());
        QStringList got;
        for (const char* name :
             {"VersionString", "VersionMajor", "VersionMinor", "VersionRevision", "FTPSite",
              "FTPDirectory", "FTPUpdateFileName", "FTPUserName", "FTPPassword", "UpdateSha256"}) {
            const QVariant value = rs->Fields(name).Value();
            got << (value.isValid() ? value.toString() : QStringLiteral("NULL"));
        }
        QCOMPARE(got.join(' '), "1.2.3 1 2 3 127.0.0.1:2121 / tavlo-update-1.2.3.run " + signIn);
    }

    void badInputExitsTwoAndChangesNothing_data() {
        columns<QStringList, QString>("arguments", "message");
        row("taken organisation", QStringList{"org", "add", "ACME LTD"}, "'ACME LTD' already");
        row("unknown organisation", args("group add S --org Nowhere"), "no organisation 'Nowhere'");
        row("group twice", args("group add sales --org 1"), "there is a group 'sales' already");
        row("empty location", QStringList{"location", "add", " ", "--org", "1"}, "name is empty");
        row("colour without #", args("status add A --org 1 --color FF8000 --order 2"), "#RRGGBB");
        row("order 0", args("status add Away --org 1 --color #FF8000 --order 0"), "from 1 to 1000");
        row("status twice", args("status add in --org 1 --color #FF8000 --order 9"),
            "'in' already");
        row("user name taken", args(kPerson + "--user ANN"), "user name 'ANN' is taken");
        row("bad user name", args(kPerson + "--user a/b"), "user name 'a/b' isn't 1 to 50 letters");
        row("no last name", args(kPerson + "--last="), "the last name is empty");
        row("two addresses", args(kPerson + "--email a@b.example,c@d.example"), "one address");
        row("unknown group", args(kPerson + "--group Nope"), "there is no group 'Nope'");
        row("unknown location", args(kPerson + "--location Moon"), "there is no location 'Moon'");
        row("disable nobody", args("person disable nobody"), "there is no user 'nobody'");
        row("missing file", args("person import /nonexistent.csv --org 1"), "can't read");
        row("unknown option", args("org add X --colour red"), "Unknown option 'colour'");
        row("unknown command", args("org rename X"), "unknown command: org rename X");
        row("history too long", args("history --days 401"), "--days takes a whole number");
        row("release, four parts", args(kRelease + "--version 1.2.3.4"), "--version takes");
        row("release, over 32767", args(kRelease + "--version 1.32768.0"), "--version takes");
        row("release, no version", args(kRelease + "--version="), "--version takes");
        row("release, port 0", args(kRelease + "--ftp-site example.org:0"), "--ftp-site takes");
        row("release, bare IPv6", args(kRelease + "--ftp-site ::1:2121"), "--ftp-site takes");
        row("release, no file", args(kRelease + "--file="), "--file takes");
        row("release, file with folder", args(kRelease + "--file updates/x.run"), "--file takes");
        row("release, short sha256", args(kRelease + "--sha256 " + kSha.left(63)),
            "--sha256 takes");
        row("release, user alone", args(kRelease + "--ftp-user update"), "go together");
        row("release, password alone", args(kRelease + "--ftp-password s3cret"), "go together");
    }
    void badInputExitsTwoAndChangesNothing() {
        auto [arguments, message] = fetch<QStringList, QString>("arguments", "message");
        const QString before = dump();
        const QString out = run(arguments, 2);
        QVERIFY2(out.contains(message), qPrintable(out));
        QCOMPARE(dump(), before);
    }
};

QTEST_MAIN(TestSetup)
#include "tst_setup.moc"
