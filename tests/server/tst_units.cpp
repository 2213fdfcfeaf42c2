#include "Rows.h"
#include "SmtpSink.h"
#include "gateway/AnswerCache.h"
#include "mail/Outbox.h"
#include "store/Database.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

std::shared_ptr<AnswerCache::Answer> answerOf(int bytes) {
    auto answer = std::make_shared<AnswerCache::Answer>();
    answer->xml = QByteArray(bytes, 'x');
    return answer;
}

QDateTime at(const char* moment) {
    return QDateTime::fromString(QString::fromLatin1(moment), Qt::ISODate);
}

} // namespace

// Units of the server on their own. The answer cache stays within its budget, drops the least
// recently used first, and keeps nothing made from outdated data. Queued mail goes out by SMTP
// from the server's own address; a mail that can't go stays waiting with the reason, is tried
// again only after its wait, and is given up after a day.
class TestUnits : public QObject {
    Q_OBJECT
    QTemporaryDir folder;

private slots:
    void cacheStaysWithinItsBudget() {
        AnswerCache cache(1 << 20);
        for (int i = 0; i < 10; ++i) {
            cache.Store(QString::number(i), 1, answerOf(200 * 1024));
            QVERIFY(cache.Bytes() <= std::size_t(1 << 20));
            QVERIFY(cache.Find("0", 1)); // used each time: kept
        }
        QVERIFY(!cache.Find("1", 1)); // the least recently used went first
        QVERIFY(cache.Find("9", 1));
        cache.Store("huge", 1, answerOf(2 << 20)); // more than all: not kept
        QVERIFY(!cache.Find("huge", 1));
        QVERIFY(cache.Find("9", 1));
    }

    void cacheDropsOutdatedAnswers() {
        AnswerCache cache(1 << 20);
        cache.Store("a", 1, answerOf(1000));
        cache.Store("b", 1, answerOf(1000));
        QVERIFY(!cache.Find("a", 2)); // asked at a newer version: dropped
        cache.Store("c", 2, answerOf(1000));
        QVERIFY(!cache.Find("b", 1));        // a newer store clears the older ones
        cache.Store("d", 1, answerOf(1000)); // made from outdated data
        QVERIFY(!cache.Find("d", 1));
        QVERIFY(cache.Find("c", 2));
    }

    // Where each row's "not a friend" mark stands, so a copy can be marked per reader; none when
    // a row has no mark of its own.
    void friendMarksAreFoundRowByRow_data() {
        columns<QByteArray, int, QList<qsizetype>>("xml", "rows", "marks");
        const QByteArray two = "<z:row a='1' myfriend='0'/>\n<z:row a='2' myfriend='0'/>\n";
        row("two rows", two, 2, QList<qsizetype>{23, 51});
        row("a row without", two, 3, QList<qsizetype>{});
        row("marked already", QByteArray("<z:row myfriend='1'/>"), 1, QList<qsizetype>{});
    }
    void friendMarksAreFoundRowByRow() {
        auto [xml, rows, marks] = fetch<QByteArray, int, QList<qsizetype>>("xml", "rows", "marks");
        const auto found = AnswerCache::FriendMarks(xml, std::size_t(rows));
        QCOMPARE(QList<qsizetype>(found.begin(), found.end()), marks);
        for (qsizetype at : found)
            QCOMPARE(xml.at(at), '0');
    }

    void outboxDeliversRetriesAndGivesUp() {
        Database db(QStringLiteral("sqlite:") + folder.filePath(QStringLiteral("t.db")));
        db.createSchema();
        db.write([&] {
            const QString insert = QStringLiteral(
                "INSERT INTO outbox (mailsys, queuedat, mailto, subject, body, mailfrom, replyto) "
                "VALUES (?, ?, ?, ?, ?, 'forged@outside.example', ?)");
            db.exec(insert, {1, "2026-11-18T09:00:00", "bob@demo.example", "Note", "A\r\nB\nC",
                             "ann@demo.example"});
            db.exec(insert,
                    {2, "2026-11-18T09:00:00", "eve@demo.example", "Other", "x", QVariant()});
        });
        const QString from = QStringLiteral("tavlo@demo.example");
        const int closedPort = [] {
            SmtpSink probe;
            return probe.port();
        }();
        const QString nobody = QStringLiteral("smtp://127.0.0.1:%1").arg(closedPort);

        // Nobody listening: both stay waiting, with the reason, until their wait has passed.
        QCOMPARE(Outbox::DeliverWaiting(db, nobody, from, at("2026-11-18T09:00:10")), 0);
        QVERIFY(Outbox::List(db).at(0).contains("waiting"));
        SmtpSink sink;
        QCOMPARE(Outbox::DeliverWaiting(db, sink.url(), from, at("2026-11-18T09:00:40")), 0);
        QCOMPARE(Outbox::DeliverWaiting(db, sink.url(), from, at("2026-11-18T09:01:20")), 2);
        QVERIFY(sink.waitFor(2, 5000));
        QCOMPARE(Outbox::DeliverWaiting(db, sink.url(), from, at("2026-11-18T09:30:00")), 0);

        const SmtpSink::Mail mail = sink.mails().at(0);
        QCOMPARE(mail.mailFrom, QByteArray("tavlo@demo.example"));
        QCOMPARE(mail.rcptTo, QList<QByteArray>{"bob@demo.example"});
        QVERIFY(mail.text.contains("To: bob@demo.example\r\nFrom: tavlo@demo.example\r\n"
                                   "Reply-To: ann@demo.example\r\nSubject: Note\r\n"));
        QVERIFY(mail.text.endsWith("\r\n\r\nA\r\nB\r\nC\r\n"));
        QVERIFY(!sink.mails().at(1).text.contains("Reply-To"));
        QVERIFY(!sink.mails().at(1).text.contains("forged"));

        // A mail that still fails a day after it was queued is given up.
        db.write([&] {
            db.exec("INSERT INTO outbox (mailsys, queuedat, mailto, subject, body) "
                    "VALUES (3, '2026-11-18T09:00:00', 'bob@demo.example', 'S', "
                    "'B')");
        });
        QCOMPARE(Outbox::DeliverWaiting(db, nobody, from, at("2026-11-19T09:00:01")), 0);
        QVERIFY(Outbox::List(db).at(2).contains("given up"));
        QCOMPARE(Outbox::DeliverWaiting(db, sink.url(), from, at("2026-11-20T09:00:00")), 0);
    }
};

QTEST_GUILESS_MAIN(TestUnits)
#include "tst_units.moc"
