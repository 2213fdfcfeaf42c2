#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <functional>
#include <memory>

// A scripted HTTP server for tests. It listens on 127.0.0.1 and a free port as soon as it is
// made, serves in its own threads, answers every request (any method, any path) with what the
// test set, and records each request as it arrived. stop() closes the port, so that a client
// then meets "connection refused"; the destructor stops it too.
//
//   TestHttpServer server;
//   QVERIFY(server.isListening());
//   server.setAnswer({200, "text/xml", rowsetBytes});       // every request from now on
//   ... the code under test posts to server.baseUrl() + "/XMLDemo.asp" ...
//   QCOMPARE(server.requests().at(0).header("content-type"), "application/x-www-form-urlencoded");
//   server.stop();                                           // from now on: refused
class TestHttpServer {
public:
    struct Request {
        QByteArray method;                            // "POST"
        QByteArray target;                            // as sent: path and query, not decoded
        QByteArray path;                              // the path, percent-decoded
        QList<QPair<QByteArray, QByteArray>> headers; // as sent; names keep their case
        QByteArray body;                              // the raw body

        // The first value of a header (names match without regard to case); empty if absent.
        QByteArray header(const QByteArray& name) const;
        bool hasHeader(const QByteArray& name) const;
    };

    struct Answer {
        int status = 200;
        QByteArray contentType = "text/xml";
        QByteArray body;
        int delayMs = 0; // wait this long before answering (to make a client time out)
    };

    using Handler = std::function<Answer(const Request&)>;

    TestHttpServer();
    ~TestHttpServer();
    TestHttpServer(const TestHttpServer&) = delete;
    TestHttpServer& operator=(const TestHttpServer&) = delete;

    bool isListening() const;
    quint16 port() const;
    QString baseUrl() const; // "http://127.0.0.1:<port>", no trailing slash

    void setAnswer(const Answer& answer); // the standing answer (default: 200, empty body)
    void setHandler(Handler handler);     // computes every answer

    QList<Request> requests() const; // every request so far, oldest first

    void stop();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
