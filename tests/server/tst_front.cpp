#include "Rows.h"
#include "ServerClient.h"
#include "TavloServerProcess.h"
#include "store/Database.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QTcpSocket>
#include <QtTest>
#include <sys/resource.h>

namespace {

// A plain TCP connection to the server, closed with the object.
class Connection {
public:
    explicit Connection(int port) {
        m_socket.connectToHost(QHostAddress::LocalHost, quint16(port));
        m_socket.waitForConnected(5000);
    }
    bool send(const QByteArray& bytes) {
        return m_socket.write(bytes) == bytes.size() && m_socket.waitForBytesWritten(1000);
    }
    // The answer's status, 0 when the server closed without one, -1 when none came in time.
    int status(int timeoutMs) {
        const QDeadlineTimer deadline(timeoutMs);
        while (!m_socket.canReadLine())
            if (!m_socket.waitForReadyRead(int(deadline.remainingTime())))
                return m_socket.state() == QAbstractSocket::ConnectedState ? -1 : 0;
        return m_socket.readLine().mid(9, 3).toInt();
    }

private:
    QTcpSocket m_socket;
};

QByteArray post(const QByteArray& body, const QByteArray& extraHeaders = {}) {
    return "POST /XMLDemo.asp HTTP/1.1\r\nHost: x\r\nContent-Type: "
           "application/x-www-form-urlencoded\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\n" + extraHeaders + "\r\n" + body;
}

const QByteArray kHealth = "GET /healthz HTTP/1.1\r\nHost: x\r\n\r\n";

int openFiles(qint64 pid) {
    return int(QDir(QStringLiteral("/proc/%1/fd").arg(pid)).entryList(QDir::NoDotAndDotDot).size());
}

void setFileLimit(qint64 pid, rlim_t soft) {
    rlimit limit{};
    ::prlimit(pid_t(pid), RLIMIT_NOFILE, nullptr, &limit);
    limit.rlim_cur = std::min(soft, limit.rlim_max);
    QVERIFY(::prlimit(pid_t(pid), RLIMIT_NOFILE, &limit, nullptr) == 0);
}

} // namespace

// The HTTP front under slow, idle, oversized and too many connections: each is turned away or waits
// its turn, and the rest of the office is still answered.
class TestFront : public QObject {
    Q_OBJECT
    std::unique_ptr<TavloServerProcess> server;

private slots:
    void initTestCase() {
        server = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Demo,
                                                      QStringList{"--workers", "2"});
        QVERIFY2(server->started(), qPrintable(server->failure()));
    }

    // Far more silent and trickling connections than workers: polls are still answered, and a
    // request that doesn't arrive whole within its deadline (10 s) is cut off.
    void slowConnectionsDontStarveOthers() {
        std::vector<std::unique_ptr<Connection>> idle, trickling;
        for (int i = 0; i < 60; ++i)
            idle.push_back(std::make_unique<Connection>(server->port()));
        for (int i = 0; i < 20; ++i) {
            trickling.push_back(std::make_unique<Connection>(server->port()));
            QVERIFY(trickling.back()->send("P"));
        }
        QElapsedTimer took;
        took.start();
        QVERIFY(ServerClient(server->baseUrl(), QStringLiteral("ann"))
                    .read(QStringLiteral("EXEC tl_GetContactStatus 1001")));
        Connection health(server->port());
        QVERIFY(health.send(kHealth));
        QCOMPARE(health.status(2000), 200);
        QVERIFY(took.elapsed() < 2000);
        for (int second = 0; second < 12; ++second) {
            for (auto& c : trickling)
                c->send("O");
            QTest::qWait(1000);
        }
        for (auto& c : trickling)
            QCOMPARE(c->status(1000), 0); // closed by the server, no answer
    }

    // Requests over a limit are answered with their reason, and logged, before anything reads them.
    void limits_data() {
        columns<QByteArray, int>("request", "status");
        QByteArray fields;
        for (int i = 0; i < 100; ++i)
            fields += "X-Field-" + QByteArray::number(i) + ": 1\r\n";
        row("100 header fields", post("strSQL=x", fields), 431);
        row("a 10 KB header", post("strSQL=x", "X-Big: " + QByteArray(10240, 'a') + "\r\n"), 431);
        row("a 70 KB body", post("strSQL=" + QByteArray(70 * 1024, 'a')), 413);
        row("not HTTP", QByteArray("HELLO\r\n\r\n"), 400);
        row("unknown page", QByteArray("GET /nothing HTTP/1.1\r\nHost: x\r\n\r\n"), 404);
    }
    void limits() {
        auto [request, status] = fetch<QByteArray, int>("request", "status");
        Connection c(server->port());
        c.send(request);
        QCOMPARE(c.status(5000), status);
        if (status != 404)
            QTRY_VERIFY(server->log().contains(
                QStringLiteral("refused from 127.0.0.1: HTTP %1").arg(status)));
    }

    // The longest note, every character percent-encoded by the client, fits in a request.
    void aFullNoteFits() {
        const QString note(8000, QLatin1Char('!'));
        QVERIFY(ServerClient(server->baseUrl(), QStringLiteral("ann"))
                    .write(QStringLiteral("EXEC tl_AddContactNote 1002,'%1',5001,0").arg(note)));
        Database db(server->dbUrl());
        QVERIFY(db.exec(QStringLiteral("SELECT 1 FROM note WHERE notetext = ?"), {note}).next());
    }

    // With one worker and one place in the queue, a burst of slow sign-ins is partly answered 503
    // at once instead of waiting; one address may hold only its share of connections.
    void busyAndCrowdedAreTurnedAway() {
        TavloServerProcess small(
            TavloServerProcess::Data::Demo,
            {"--workers", "1", "--queue", "1", "--max-connections-per-address", "12"});
        QVERIFY2(small.started(), qPrintable(small.failure()));
        std::vector<std::unique_ptr<Connection>> burst;
        for (int i = 0; i < 10; ++i) {
            burst.push_back(std::make_unique<Connection>(small.port()));
            burst.back()->send(post("strSQL=EXEC%20LoginCheck%20%27ann%27%2C%27wrong%27"));
        }
        QMap<int, int> statuses;
        for (auto& c : burst)
            ++statuses[c->status(20000)];
        QVERIFY2(statuses.value(503) > 0 && statuses.value(200) > 0,
                 qPrintable(QString::number(statuses.value(503))));
        burst.clear();
        std::vector<std::unique_ptr<Connection>> crowd;
        for (int i = 0; i < 12; ++i)
            crowd.push_back(std::make_unique<Connection>(small.port()));
        Connection over(small.port());
        QVERIFY(over.send(kHealth));
        QCOMPARE(over.status(2000), 503);
        crowd.clear();
        Connection again(small.port());
        QVERIFY(again.send(kHealth));
        QCOMPARE(again.status(5000), 200);
    }

    // Out of file handles: nothing is answered while they are short, nothing ends the server (the
    // background work can't open its database meanwhile either), and answers come again by
    // themselves once handles are free.
    void runningOutOfFileHandlesHeals() {
        const qint64 pid = server->pid();
        setFileLimit(pid, rlim_t(openFiles(pid) + 8));
        std::vector<std::unique_ptr<Connection>> hoard;
        for (int i = 0; i < 30; ++i)
            hoard.push_back(std::make_unique<Connection>(server->port()));
        Connection starved(server->port());
        QVERIFY(starved.send(kHealth));
        QCOMPARE(starved.status(1000), -1);
        hoard.clear();
        setFileLimit(pid, RLIM_INFINITY);
        QCOMPARE(starved.status(5000), 200);
        QTRY_VERIFY(server->log().contains(QStringLiteral("accepting connections again")));
    }
};

QTEST_GUILESS_MAIN(TestFront)
#include "tst_front.moc"
