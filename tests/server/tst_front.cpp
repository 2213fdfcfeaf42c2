#include "ServerClient.h"
#include "TavloServerProcess.h"

#include "Rows.h"
#include <QDir>
#include <QtTest>
#include <arpa/inet.h>
#include <future>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// A plain TCP connection to the server, closed with the object.
class Connection {
public:
    explicit Connection(int port) : m_fd(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(quint16(port));
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(m_fd, reinterpret_cast<sockaddr*>(&to), sizeof to) != 0) {
            ::close(m_fd);
            m_fd = -1;
        }
    }
    ~Connection() {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool send(const QByteArray& bytes) {
        return m_fd >= 0 && ::send(m_fd, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL) ==
                                ssize_t(bytes.size());
    }
    // The answer's status, 0 when the server closed without one, -1 when none came in time.
    int status(int timeoutMs) {
        QByteArray got;
        QElapsedTimer waited;
        waited.start();
        while (!got.contains("\r\n") && waited.elapsed() < timeoutMs) {
            pollfd ready{m_fd, POLLIN, 0};
            if (::poll(&ready, 1, int(timeoutMs - waited.elapsed())) <= 0)
                break;
            char buffer[4096];
            const ssize_t n = ::recv(m_fd, buffer, sizeof buffer, 0);
            if (n <= 0)
                return 0;
            got.append(buffer, n);
        }
        if (!got.contains("\r\n"))
            return -1;
        return got.mid(9, 3).toInt();
    }

private:
    int m_fd;
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

// The HTTP front under slow, idle, oversized and too many connections: each is turned away
// or waits its turn, and the rest of the office is still answered.
class TestFront : public QObject {
    Q_OBJECT
    std::unique_ptr<TavloServerProcess> server;

    int port() const { return server->baseUrl().section(QLatin1Char(':'), -1).toInt(); }

private slots:
    void initTestCase() {
        server = std::make_unique<TavloServerProcess>(
            TavloServerProcess::Data::Demo,
            QStringList{QStringLiteral("--workers"), QStringLiteral("2")});
        QVERIFY2(server->started(), qPrintable(server->failure()));
    }

    // Far more silent and trickling connections than workers: polls are still answered, and
    // a request that doesn't arrive whole within its deadline (10 s) is cut off.
    void slowConnectionsDontStarveOthers() {
        std::vector<std::unique_ptr<Connection>> idle, trickling;
        for (int i = 0; i < 60; ++i)
            idle.push_back(std::make_unique<Connection>(port()));
        for (int i = 0; i < 20; ++i) {
            trickling.push_back(std::make_unique<Connection>(port()));
            QVERIFY(trickling.back()->send("P"));
        }
        ServerClient ann(server->baseUrl(), QStringLiteral("ann"));
        QElapsedTimer took;
        took.start();
        QVERIFY(ann.read(QStringLiteral("EXEC tl_GetContactStatus 1001")));
        Connection health(port());
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

    void limits_data() {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<int>("status");
        QByteArray fields;
        for (int i = 0; i < 100; ++i)
            fields += "X-Field-" + QByteArray::number(i) + ": 1\r\n";
        QTest::newRow("100 header fields") << post("strSQL=x", fields) << 431;
        QTest::newRow("a 10 KB header")
            << post("strSQL=x", "X-Big: " + QByteArray(10240, 'a') + "\r\n") << 431;
        QTest::newRow("a 70 KB body") << post("strSQL=" + QByteArray(70 * 1024, 'a')) << 413;
        QTest::newRow("not HTTP") << QByteArray("HELLO\r\n\r\n") << 400;
        QTest::newRow("unknown page")
            << QByteArray("GET /nothing HTTP/1.1\r\nHost: x\r\n\r\n") << 404;
    }
    void limits() {
        auto [request, status] = fetch<QByteArray, int>("request", "status");
        Connection c(port());
        c.send(request);
        QCOMPARE(c.status(5000), status);
    }

    // The longest note, every character percent-encoded by the client, fits in a request.
    void aFullNoteFits() {
        ServerClient ann(server->baseUrl(), QStringLiteral("ann"));
        const QString note(8000, QLatin1Char('!'));
        QVERIFY(ann.write(QStringLiteral("EXEC tl_AddContactNote 1002,'%1',5001,0").arg(note)));
        ServerClient bob(server->baseUrl(), QStringLiteral("bob"));
        auto notes = bob.read(QStringLiteral("EXEC tl_GetContactNotes 1002,NULL,NULL,5002"));
        QVERIFY(notes && notes->RecordCount() >= 1);
        bool found = false;
        for (; !notes->Eof(); notes->MoveNext())
            found |= notes->Fields(QStringLiteral("NoteText")).Value().toString() == note;
        QVERIFY(found);
    }

    // With one worker and one place in the queue, a burst of slow sign-ins is partly answered
    // 503 at once instead of waiting; one address may hold only its share of connections.
    void busyAndCrowdedAreTurnedAway() {
        TavloServerProcess small(TavloServerProcess::Data::Demo,
                                 {QStringLiteral("--workers"), QStringLiteral("1"),
                                  QStringLiteral("--queue"), QStringLiteral("1"),
                                  QStringLiteral("--max-connections-per-address"),
                                  QStringLiteral("12")});
        QVERIFY2(small.started(), qPrintable(small.failure()));
        const int at = small.baseUrl().section(QLatin1Char(':'), -1).toInt();
        std::vector<std::unique_ptr<Connection>> burst;
        for (int i = 0; i < 10; ++i) {
            burst.push_back(std::make_unique<Connection>(at));
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
            crowd.push_back(std::make_unique<Connection>(at));
        Connection over(at);
        QVERIFY(over.send(kHealth));
        QCOMPARE(over.status(2000), 503);
        crowd.clear();
        Connection again(at);
        QVERIFY(again.send(kHealth));
        QCOMPARE(again.status(5000), 200);
    }

    // Out of file handles: nothing is answered while they are short, nothing ends the server
    // (the background work can't open its database meanwhile either), and answers come again
    // by themselves once handles are free.
    void runningOutOfFileHandlesHeals() {
        const qint64 pid = server->pid();
        setFileLimit(pid, rlim_t(openFiles(pid) + 8));
        std::vector<std::unique_ptr<Connection>> hoard;
        for (int i = 0; i < 30; ++i)
            hoard.push_back(std::make_unique<Connection>(port()));
        Connection starved(port());
        QVERIFY(starved.send(kHealth));
        QCOMPARE(starved.status(1000), -1);
        hoard.clear();
        setFileLimit(pid, RLIM_INFINITY);
        QElapsedTimer healed;
        healed.start();
        QCOMPARE(starved.status(5000), 200);
        qInfo("answered %lld ms after handles were free", healed.elapsed());
        QTRY_VERIFY(server->log().contains(QStringLiteral("accepting connections again")));
    }
};

QTEST_GUILESS_MAIN(TestFront)
#include "tst_front.moc"
