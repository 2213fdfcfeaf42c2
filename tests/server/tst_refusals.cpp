#include "PgInstance.h"
#include "ServerClient.h"
#include "TavloServerProcess.h"
#include "store/Database.h"

#include <QCoreApplication>
#include <QtTest>

// Nothing but catalogue statements of the right shapes ever runs; everything else is refused
// with an error page and leaves the database exactly as it was.
class TestRefusals : public QObject {
    Q_OBJECT
    std::unique_ptr<TavloServerProcess> server;
    std::unique_ptr<ServerClient> client;
    std::unique_ptr<Database> db;

private slots:
    void initTestCase() {
        server = std::make_unique<TavloServerProcess>();
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

    void refused_data() {
        QTest::addColumn<QString>("sql");
        QTest::newRow("plain SQL") << "SELECT * FROM users";
        QTest::newRow("drop") << "DROP TABLE contact";
        QTest::newRow("unknown procedure") << "EXEC sp_who";
        QTest::newRow("quote break-out") << "EXEC LoginCheck 'x'; DROP TABLE users; --','y'";
        QTest::newRow("stacked") << "EXEC tl_GetContactStatus 1001; DELETE FROM contact";
        QTest::newRow("comment") << "EXEC tl_GetContactStatus 1001 -- hi";
        QTest::newRow("block comment") << "EXEC tl_GetContactStatus /* x */ 1001";
        QTest::newRow("unbalanced quote") << "EXEC LoginCheck 'ann,'demo'";
        QTest::newRow("too few") << "EXEC tl_SetStatus 1001,8";
        QTest::newRow("too many") << "EXEC tl_GetContactStatus 1001,2";
        QTest::newRow("text for number") << "EXEC tl_GetContactStatus '1001'";
        QTest::newRow("number for text") << "EXEC LoginCheck 1,2";
        QTest::newRow("NULL where a number must be") << "EXEC tl_MyFriendsAdd NULL,1001";
        QTest::newRow("one person's row without the person")
            << "EXECUTE tl_GetUserStatuses NULL,NULL";
        QTest::newRow("sessions other table") << "INSERT INTO Users (UserSys) VALUES (1)";
        QTest::newRow("sessions, changed shape")
            << "UPDATE Sessions SET LogoutDate = NULL WHERE SessionSys = 1";
        QTest::newRow("huge number") << "EXEC tl_GetContactStatus 99999999999999999999999";
        QTest::newRow("empty") << "";
        QTest::newRow("high bytes") << QString::fromLatin1("EXEC tl_GetContactStatus \xA0\xFF\x80");
    }
    void refused() {
        QFETCH(QString, sql);
        const QString before = db->dump();
        QVERIFY(client->refused(sql));
        QCOMPARE(db->dump(), before);
    }

    // Texts of 100 KB are stopped by size before anything reads them.
    void oversizedBodies() {
        const QString before = db->dump();
        const auto reply =
            client->post(QStringLiteral("EXEC tl_AddContactNote 1001,'") +
                         QString(100 * 1024, QLatin1Char('x')) + QStringLiteral("',5001,0"));
        QVERIFY(reply.transportOk);
        QCOMPARE(reply.httpStatus, 413L);
        QCOMPARE(db->dump(), before);
        QTRY_VERIFY(server->log().contains(QStringLiteral("refused from 127.0.0.1: HTTP 413")));
    }

    void aLegalStatementStillRuns() {
        QVERIFY(client->read(QStringLiteral("EXEC tl_GetContactStatus 1001")));
    }

    // PostgreSQL restarted under a running server: the next statements open fresh connections
    // instead of failing until the server itself is restarted.
    void aDatabaseRestartHeals() {
        if (!server->postgres())
            return; // SQLite has no server of its own to restart
        const QString read = QStringLiteral("EXEC tl_GetContactStatus 1001");
        QVERIFY(client->read(read));
        QVERIFY(server->postgres()->restart());
        QTRY_VERIFY_WITH_TIMEOUT(client->read(read).has_value(), 5000);
        QVERIFY(client->write(QStringLiteral("EXEC tl_UpdateChatStatus 1001, 0")));
    }
};

QTEST_GUILESS_MAIN(TestRefusals)
#include "tst_refusals.moc"
