#include "SmtpSink.h"
#include "mail/Outbox.h"
#include "store/Database.h"

#include <QTemporaryDir>
#include <QtTest>

// Queued mail goes out by SMTP from the server's own address; a mail that can't go stays
// waiting with the reason, is tried again only after its wait, and is given up after a day.
class TestOutbox : public QObject {
    Q_OBJECT
    QTemporaryDir folder;

    static QDateTime at(const char* moment) {
        return QDateTime::fromString(QString::fromLatin1(moment), Qt::ISODate);
    }

private slots:
    void deliversRetriesAndGivesUp() {
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
        QVERIFY(Outbox::List(db).at(0).contains(QStringLiteral("waiting")));
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
            db.exec(QStringLiteral("INSERT INTO outbox (mailsys, queuedat, mailto, subject, body) "
                                   "VALUES (3, '2026-11-18T09:00:00', 'bob@demo.example', 'S', "
                                   "'B')"));
        });
        QCOMPARE(Outbox::DeliverWaiting(db, nobody, from, at("2026-11-19T09:00:01")), 0);
        QVERIFY(Outbox::List(db).at(2).contains(QStringLiteral("given up")));
        QCOMPARE(Outbox::DeliverWaiting(db, sink.url(), from, at("2026-11-20T09:00:00")), 0);
    }
};

QTEST_GUILESS_MAIN(TestOutbox)
#include "tst_outbox.moc"
