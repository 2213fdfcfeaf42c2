#include "ServerClient.h"
#include "TavloServerProcess.h"
#include "store/Database.h"

#include <QtTest>
#include <atomic>
#include <csignal>
#include <thread>

// The server killed outright (kill -9) again and again while writers keep writing: every write
// it acknowledged is still there after each restart.
class TestCrash : public QObject {
    Q_OBJECT

private slots:
    void acknowledgedWritesSurviveKills() {
        TavloServerProcess server;
        if (server.mayBeSkipped())
            QSKIP(qPrintable(server.failure()));
        QVERIFY2(server.started(), qPrintable(server.failure()));
        std::atomic<bool> writing{true};
        std::vector<QStringList> acknowledged(4);
        std::vector<std::thread> writers;
        for (std::size_t w = 0; w < acknowledged.size(); ++w)
            writers.emplace_back([&, w] {
                ServerClient ann(server.baseUrl(), QStringLiteral("ann"));
                for (int n = 0; writing; ++n) {
                    const QString text = QStringLiteral("w%1-%2").arg(w).arg(n);
                    if (ann.write(
                            QStringLiteral("EXEC tl_AddContactNote 1002,'%1',5001,0").arg(text)))
                        acknowledged[w] << text;
                }
            });
        for (int kill = 0; kill < 3; ++kill) {
            QTest::qWait(700);
            ::kill(pid_t(server.pid()), SIGKILL);
            QVERIFY(server.restart());
        }
        QTest::qWait(500);
        writing = false;
        for (auto& writer : writers)
            writer.join();
        Database db(server.dbUrl());
        QSet<QString> stored;
        QSqlQuery notes = db.exec(QStringLiteral("SELECT notetext FROM note"));
        while (notes.next())
            stored.insert(notes.value(0).toString());
        qsizetype total = 0;
        for (const QStringList& texts : acknowledged) {
            total += texts.size();
            for (const QString& text : texts)
                QVERIFY2(stored.contains(text), qPrintable(text + QStringLiteral(" was lost")));
        }
        qInfo("%lld acknowledged writes across 3 kills, none lost", qint64(total));
        QVERIFY(total > 100);
    }
};

QTEST_GUILESS_MAIN(TestCrash)
#include "tst_crash.moc"
