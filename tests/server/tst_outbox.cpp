#include "mail/Outbox.h"
#include "store/Database.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtTest>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

// A one-connection SMTP listener on a free loopback port that accepts whatever it is given
// and keeps the message text.
class SmtpSink {
public:
    SmtpSink() {
        m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address);
        socklen_t length = sizeof address;
        ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length);
        m_port = ntohs(address.sin_port);
        ::listen(m_listener, 4);
        m_thread = std::thread([this] { serve(); });
    }
    ~SmtpSink() {
        ::shutdown(m_listener, SHUT_RDWR);
        ::close(m_listener);
        m_thread.join();
    }
    int port() const { return m_port; }
    QByteArray message() const { return m_message; }

private:
    void serve() {
        const int client = ::accept(m_listener, nullptr, nullptr);
        if (client < 0)
            return;
        auto say = [&](const char* line) { ::send(client, line, strlen(line), MSG_NOSIGNAL); };
        say("220 sink ESMTP\r\n");
        QByteArray pending;
        bool inData = false;
        char buffer[4096];
        for (ssize_t n; (n = ::recv(client, buffer, sizeof buffer, 0)) > 0;) {
            pending.append(buffer, n);
            for (qsizetype end; (end = pending.indexOf("\r\n")) >= 0;) {
                const QByteArray line = pending.left(end);
                pending.remove(0, end + 2);
                if (inData) {
                    if (line == ".") {
                        inData = false;
                        say("250 queued\r\n");
                    } else {
                        m_message += line + "\r\n";
                    }
                } else if (line.startsWith("DATA")) {
                    inData = true;
                    say("354 go on\r\n");
                } else if (line.startsWith("QUIT")) {
                    say("221 bye\r\n");
                    ::close(client);
                    return;
                } else {
                    say("250 ok\r\n");
                }
            }
        }
        ::close(client);
    }

    int m_listener = -1;
    int m_port = 0;
    std::thread m_thread;
    QByteArray m_message;
};

} // namespace

// Queued mail goes out by SMTP; a mail that can't go stays waiting with the reason.
class TestOutbox : public QObject {
    Q_OBJECT
    QTemporaryDir folder;

private slots:
    void deliversAndKeepsFailures() {
        Database db(QStringLiteral("sqlite:") + folder.filePath(QStringLiteral("t.db")));
        db.createSchema();
        db.write([&] {
            db.exec(QStringLiteral("INSERT INTO outbox (mailsys, queuedat, mailto, subject, body, "
                                   "mailfrom, replyto) VALUES (1, '2026-11-18T09:00:00', "
                                   "'bob@demo.example', 'Note', ?, 'ann@demo.example', "
                                   "'ann@demo.example')"),
                    {QStringLiteral("Line one\nLine two")});
        });

        // Nobody listening: the mail stays, with the reason.
        const int closedPort = [] {
            SmtpSink probe;
            return probe.port();
        }();
        QCOMPARE(Outbox::DeliverWaiting(db, QStringLiteral("smtp://127.0.0.1:%1").arg(closedPort)),
                 0);
        QVERIFY(Outbox::List(db).at(0).contains(QStringLiteral("waiting")));

        SmtpSink sink;
        QCOMPARE(Outbox::DeliverWaiting(db, QStringLiteral("smtp://127.0.0.1:%1").arg(sink.port())),
                 1);
        QVERIFY(!Outbox::List(db).at(0).contains(QStringLiteral("waiting")));
        QCOMPARE(Outbox::DeliverWaiting(db, QStringLiteral("smtp://127.0.0.1:%1").arg(sink.port())),
                 0);
    }

    void theMessageIsWellFormed() {
        Database db(QStringLiteral("sqlite:") + folder.filePath(QStringLiteral("u.db")));
        db.createSchema();
        db.write([&] {
            db.exec(
                QStringLiteral("INSERT INTO outbox (mailsys, queuedat, mailto, subject, body, "
                               "mailfrom) VALUES (1, '2026-11-18T09:00:00', 'bob@demo.example', "
                               "'Tavlo Lost Password Request', ?, 'info@demo.example')"),
                {QStringLiteral("A\r\nB\nC")});
        });
        SmtpSink sink;
        QCOMPARE(Outbox::DeliverWaiting(db, QStringLiteral("smtp://127.0.0.1:%1").arg(sink.port())),
                 1);
        const QByteArray message = sink.message();
        QVERIFY(message.contains("To: bob@demo.example\r\n"));
        QVERIFY(message.contains("Subject: Tavlo Lost Password Request\r\n"));
        QVERIFY(message.contains("\r\n\r\nA\r\nB\r\nC\r\n"));
    }
};

QTEST_GUILESS_MAIN(TestOutbox)
#include "tst_outbox.moc"
