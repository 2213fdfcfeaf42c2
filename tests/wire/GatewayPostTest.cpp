#include "wire/GatewayPost.h"
#include "TestHttpServer.h"

#include "Rows.h"
#include <QtTest>
#include <atomic>
#include <thread>

using namespace wire;

namespace {

const QByteArray kRowset = "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'/>";

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
    // The statement goes as the client's form body, in the code page, to XMLDemo.asp under the
    // address as it stands (a trailing slash stays), in one request however large.
    void postsExactlyTheClientsRequest() {
        TestHttpServer server;
        server.setAnswer({200, "text/xml", kRowset});
        const QString sql = "EXEC tl_SetStatus 12,8,'Zoë € 中','x+y%',NULL,15";
        const GatewayReply reply = postStatement(request(server.baseUrl() + "/", sql));
        QVERIFY2(reply.transportOk, qPrintable(reply.transportError));
        QCOMPARE(reply.httpStatus, 200L);
        QCOMPARE(reply.body, kRowset);
        postStatement(request(server.baseUrl(), "EXEC tl_x '" + QString(400000, u'.') + "'"));

        const auto requests = server.requests();
        QCOMPARE(requests.size(), 2);
        const auto& r = requests.first();
        QCOMPARE(r.method, QByteArray("POST"));
        QCOMPARE(r.target, QByteArray("//XMLDemo.asp"));
        QCOMPARE(r.header("Content-Type"), QByteArray("application/x-www-form-urlencoded"));
        QCOMPARE(r.header("lastCached"), QByteArray("1/2/2024 9:13:00 AM"));
        const QByteArray body = "strSQL=EXEC%20tl%5FSetStatus%2012%2C8%2C%27Zo%EB%20%80%20%3F%27"
                                "%2C%27x%2By%25%27%2CNULL%2C15";
        QCOMPARE(r.body, body);
        QCOMPARE(r.header("Content-Length"), QByteArray::number(body.size()));
        QCOMPARE(gatewayBody(sql), body);
        QCOMPARE(requests[1].body,
                 "strSQL=EXEC%20tl%5Fx%20%27" + QByteArray("%2E").repeated(400000) + "%27");
        for (const auto& each : requests) // no 100-continue round trip, nothing compressed
            QVERIFY(!each.hasHeader("Expect") && !each.hasHeader("Accept-Encoding") &&
                    !each.hasHeader("Transfer-Encoding"));
    }

    void theStatusCodeDecidesNothing_data() {
        columns<int, QByteArray>("status", "body");
        row("rowset with 404", 404, kRowset);
        row("error page", 500, QByteArray("<html><body>Error</body></html>"));
    }
    void theStatusCodeDecidesNothing() {
        auto [status, body] = fetch<int, QByteArray>("status", "body");
        TestHttpServer server;
        server.setAnswer({status, "text/html", body});
        const GatewayReply reply = postStatement(request(server.baseUrl(), "EXEC tl_a 1"));
        QVERIFY(reply.transportOk);
        QCOMPARE(reply.httpStatus, long(status));
        QCOMPARE(reply.body, body);
    }

    void transportFailuresAreTold_data() {
        columns<bool, int, QString>("stopped", "delay", "address"); // no address: the server's
        row("refused", true, 0, "");
        row("timed out", false, 1000, "");
        row("unresolvable", false, 0, "http://tavlo-no-such-host.invalid");
    }
    void transportFailuresAreTold() {
        auto [stopped, delay, address] = fetch<bool, int, QString>("stopped", "delay", "address");
        TestHttpServer server;
        server.setAnswer({200, "text/xml", kRowset, delay});
        if (stopped)
            server.stop();
        GatewayRequest r = request(address.isEmpty() ? server.baseUrl() : address, "EXEC tl_a 1");
        r.timeoutMs = delay > 0 ? 200 : 10000;
        const GatewayReply reply = postStatement(r);
        QVERIFY(!reply.transportOk && !reply.transportError.isEmpty());
        QVERIFY(reply.body.isEmpty());
    }

    void callsFromSeveralThreadsAtOnceStayApart() {
        TestHttpServer server;
        server.setHandler([](const TestHttpServer::Request& r) {
            return TestHttpServer::Answer{200, "text/plain", r.body};
        });
        std::atomic<int> wrong{0};
        std::vector<std::thread> pool;
        for (int t = 0; t < 6; ++t) {
            pool.emplace_back([&, t] {
                for (int i = 0; i < 10; ++i) {
                    const QString sql = QStringLiteral("EXEC tl_a %1,%2").arg(t).arg(i);
                    const GatewayReply reply = postStatement(request(server.baseUrl(), sql));
                    wrong += !reply.transportOk || reply.body != "strSQL=EXEC%20tl%5Fa%20" +
                                                                     QByteArray::number(t) + "%2C" +
                                                                     QByteArray::number(i);
                }
            });
        }
        for (auto& th : pool)
            th.join();
        QCOMPARE(wrong.load(), 0);
        QCOMPARE(server.requests().size(), 60);
    }
};

QTEST_GUILESS_MAIN(GatewayPostTest)
#include "GatewayPostTest.moc"
