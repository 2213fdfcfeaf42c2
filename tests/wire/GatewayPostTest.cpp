#include "wire/GatewayPost.h"
#include "TestHttpServer.h"

#include "Rows.h"
#include <QtTest>
#include <arpa/inet.h>
#include <atomic>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace wire;

namespace {

const QByteArray kRowset = "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'/>";

// A bare loopback listener for what the test server cannot show: it either resets each
// connection at once, or records the raw request head and answers 200 with an empty body.
class RawListener {
public:
    enum class Mode { Reset, Record };

    explicit RawListener(Mode mode) : m_mode(mode) {
        m_fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        if (::bind(m_fd, reinterpret_cast<sockaddr*>(&a), len) != 0 || ::listen(m_fd, 4) != 0 ||
            ::getsockname(m_fd, reinterpret_cast<sockaddr*>(&a), &len) != 0)
            qFatal("cannot listen on loopback");
        m_port = ntohs(a.sin_port);
        m_thread = std::thread([this] { serve(); });
    }
    ~RawListener() {
        m_stop = true;
        ::shutdown(m_fd, SHUT_RDWR);
        ::close(m_fd);
        m_thread.join();
    }
    QString baseUrl() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_port); }
    QByteArray head() const { return m_head; } // read it only after the request is answered

private:
    void serve() {
        while (true) {
            const int c = ::accept(m_fd, nullptr, nullptr);
            if (c < 0 || m_stop)
                return;
            if (m_mode == Mode::Record) {
                char buf[4096];
                while (!m_head.contains("\r\n\r\n")) {
                    const ssize_t n = ::recv(c, buf, sizeof buf, 0);
                    if (n <= 0)
                        break;
                    m_head.append(buf, n);
                }
                m_head.truncate(m_head.indexOf("\r\n\r\n") + 2);
                const char answer[] = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n"
                                      "Connection: close\r\n\r\n";
                ::send(c, answer, sizeof answer - 1, MSG_NOSIGNAL);
            } else {
                linger l{1, 0}; // close with RST
                ::setsockopt(c, SOL_SOCKET, SO_LINGER, &l, sizeof l);
            }
            ::close(c);
        }
    }

    Mode m_mode;
    int m_fd = -1;
    quint16 m_port = 0;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
    QByteArray m_head;
};

GatewayRequest request(const QString& base, const QString& sql) {
    GatewayRequest r;
    r.baseUrl = base;
    r.sql = sql;
    r.lastCached = QStringLiteral("1/2/2024 9:13:00 AM");
    return r;
}

} // namespace

class GatewayPostTest : public QObject {
    Q_OBJECT
private slots:
    void postsExactlyTheClientsRequest() {
        TestHttpServer server;
        QVERIFY(server.isListening());
        server.setAnswer({200, "text/xml", kRowset});
        const GatewayReply reply = postStatement(
            request(server.baseUrl(), "EXEC tl_SetStatus 12,8,'Zoë € 中','x+y%',NULL,15"));
        QVERIFY2(reply.transportOk, qPrintable(reply.transportError));
        QCOMPARE(reply.httpStatus, 200L);
        QCOMPARE(reply.body, kRowset);

        const auto requests = server.requests();
        QCOMPARE(requests.size(), 1);
        const auto& r = requests.first();
        QCOMPARE(r.method, QByteArray("POST"));
        QCOMPARE(r.target, QByteArray("/XMLDemo.asp"));
        QCOMPARE(r.header("Content-Type"), QByteArray("application/x-www-form-urlencoded"));
        QCOMPARE(r.header("lastCached"), QByteArray("1/2/2024 9:13:00 AM"));
        const QByteArray body = "strSQL=EXEC%20tl%5FSetStatus%2012%2C8%2C%27Zo%EB%20%80%20%3F%27"
                                "%2C%27x%2By%25%27%2CNULL%2C15";
        QCOMPARE(r.body, body);
        QCOMPARE(r.header("Content-Length"), QByteArray::number(body.size()));
        QCOMPARE(gatewayBody("EXEC tl_SetStatus 12,8,'Zoë € 中','x+y%',NULL,15"), body);
        QVERIFY(!r.hasHeader("Expect"));
        QVERIFY(!r.hasHeader("Accept-Encoding"));
        QVERIFY(!r.hasHeader("Transfer-Encoding"));
    }

    void aLargeStatementStillGoesInOneRequest() {
        TestHttpServer server;
        const QString sql = "EXEC tl_AddContactNote 12,'" + QString(400000, u'.') + "',15,0";
        const GatewayReply reply = postStatement(request(server.baseUrl(), sql));
        QVERIFY2(reply.transportOk, qPrintable(reply.transportError));
        QCOMPARE(reply.httpStatus, 200L);
        const auto r = server.requests().value(0);
        QVERIFY(!r.hasHeader("Expect")); // no 100-continue round trip, however large
        QCOMPARE(r.body, gatewayBody(sql));
    }

    void theAddressIsTakenAsItStands() {
        TestHttpServer server;
        postStatement(request(server.baseUrl() + "/", "EXECUTE tl_VersionCheck"));
        postStatement(request(server.baseUrl() + "/tavlo", "EXECUTE tl_VersionCheck"));
        const auto requests = server.requests();
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests[0].target, QByteArray("//XMLDemo.asp"));
        QCOMPARE(requests[1].target, QByteArray("/tavlo/XMLDemo.asp"));
    }

    void theRequestHeadIsTheClients_data() {
        columns<QString, QByteArray>("lastCached", "line");
        row("a moment", "1/2/2024 9:13:00 AM", QByteArray("lastCached: 1/2/2024 9:13:00 AM"));
        row("empty, still sent", "", QByteArray("lastCached:"));
    }
    void theRequestHeadIsTheClients() {
        QFETCH(QString, lastCached);
        QFETCH(QByteArray, line);
        RawListener raw(RawListener::Mode::Record);
        GatewayRequest r = request(raw.baseUrl(), "EXECUTE tl_VersionCheck");
        r.lastCached = lastCached;
        QVERIFY(postStatement(r).transportOk);
        const QList<QByteArray> lines = raw.head().split('\n');
        QCOMPARE(lines.value(0), QByteArray("POST /XMLDemo.asp HTTP/1.1\r"));
        QVERIFY(lines.contains(line + "\r"));
        QVERIFY(lines.contains("Content-Type: application/x-www-form-urlencoded\r"));
        for (const QByteArray& l : lines) {
            QVERIFY2(!l.startsWith("Expect") && !l.startsWith("Accept-Encoding") &&
                         !l.startsWith("Transfer-Encoding"),
                     l.constData());
        }
    }

    void theStatusCodeDecidesNothing_data() {
        columns<int, QByteArray>("status", "body");
        row("rowset with 404", 404, kRowset);
        row("rowset with 500", 500, kRowset);
        row("empty 200", 200, QByteArray());
        row("error page", 500, QByteArray("<html><body>Error</body></html>"));
    }
    void theStatusCodeDecidesNothing() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        TestHttpServer server;
        server.setAnswer({status, "text/html", body});
        const GatewayReply reply = postStatement(request(server.baseUrl(), "EXEC tl_a 1"));
        QVERIFY(reply.transportOk);
        QCOMPARE(reply.httpStatus, long(status));
        QCOMPARE(reply.body, body);
    }

    void transportFailuresAreTold_data() {
        columns<QString>("kind");
        row("refused", "refused");
        row("reset", "reset");
        row("timed out", "timeout");
        row("unresolvable", "unresolvable");
    }
    void transportFailuresAreTold() {
        QFETCH(QString, kind);
        TestHttpServer server;
        RawListener resetting(RawListener::Mode::Reset);
        GatewayRequest r = request(server.baseUrl(), "EXECUTE tl_VersionCheck");
        r.timeoutMs = 10000;
        if (kind == "refused") {
            server.stop();
        } else if (kind == "reset") {
            r.baseUrl = resetting.baseUrl();
        } else if (kind == "timeout") {
            server.setAnswer({200, "text/xml", kRowset, 1000});
            r.timeoutMs = 200;
        } else {
            r.baseUrl = "http://tavlo-no-such-host.invalid";
        }
        const GatewayReply reply = postStatement(r);
        QVERIFY(!reply.transportOk);
        QVERIFY(!reply.transportError.isEmpty());
        QVERIFY(reply.body.isEmpty());
    }

    void callsFromSeveralThreadsAtOnceStayApart() {
        TestHttpServer server;
        server.setHandler([](const TestHttpServer::Request& r) {
            return TestHttpServer::Answer{200, "text/plain", r.body};
        });
        constexpr int threads = 6;
        constexpr int calls = 10;
        std::atomic<int> wrong{0};
        std::vector<std::thread> pool;
        for (int t = 0; t < threads; ++t) {
            pool.emplace_back([&, t] {
                for (int i = 0; i < calls; ++i) {
                    const QString sql = QStringLiteral("EXEC tl_a %1,%2").arg(t).arg(i);
                    const GatewayReply reply = postStatement(request(server.baseUrl(), sql));
                    if (!reply.transportOk || reply.body != gatewayBody(sql))
                        ++wrong;
                }
            });
        }
        for (auto& th : pool)
            th.join();
        QCOMPARE(wrong.load(), 0);
        QCOMPARE(server.requests().size(), threads * calls);
    }
};

QTEST_GUILESS_MAIN(GatewayPostTest)
#include "GatewayPostTest.moc"
