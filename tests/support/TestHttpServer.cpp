#include "TestHttpServer.h"

#include <httplib.h>

#include <QMutex>
#include <QMutexLocker>
#include <chrono>
#include <thread>

namespace {

// Entries the library adds to a request's headers on its own; they never crossed the wire.
bool isLibraryHeader(const std::string& name) {
    return name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" ||
           name == "LOCAL_PORT";
}

QByteArray bytes(const std::string& s) {
    return QByteArray(s.data(), qsizetype(s.size()));
}

} // namespace

struct TestHttpServer::Impl {
    httplib::Server server;
    std::thread thread;
    int port = -1;
    mutable QMutex mutex;
    Answer standing;
    Handler handler;
    QList<Request> requests;

    Answer answerFor(const Request& request) {
        QMutexLocker lock(&mutex);
        requests.append(request);
        if (handler) {
            Handler h = handler;
            lock.unlock();
            return h(request);
        }
        return standing;
    }

    void serve(const httplib::Request& in, httplib::Response& out, const std::string& body) {
        Request r;
        r.method = bytes(in.method);
        r.target = bytes(in.target);
        r.path = bytes(in.path);
        for (const auto& [name, value] : in.headers) {
            if (!isLibraryHeader(name))
                r.headers.append({bytes(name), bytes(value)});
        }
        r.body = bytes(body);
        const Answer a = answerFor(r);
        if (a.delayMs > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(a.delayMs));
        out.status = a.status;
        out.set_content(a.body.toStdString(), a.contentType.toStdString());
    }
};

QByteArray TestHttpServer::Request::header(const QByteArray& name) const {
    for (const auto& [key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

bool TestHttpServer::Request::hasHeader(const QByteArray& name) const {
    for (const auto& entry : headers) {
        if (entry.first.compare(name, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

TestHttpServer::TestHttpServer() : d(std::make_unique<Impl>()) {
    auto plain = [this](const httplib::Request& in, httplib::Response& out) {
        d->serve(in, out, in.body);
    };
    // Bodies are read through a content reader: the library's own reading refuses form bodies
    // over 8 KiB, and a test must see whatever a client sent.
    auto withBody = [this](const httplib::Request& in, httplib::Response& out,
                           const httplib::ContentReader& read) {
        std::string body;
        read([&body](const char* data, size_t n) {
            body.append(data, n);
            return true;
        });
        d->serve(in, out, body);
    };
    const std::string any = ".*";
    d->server.Get(any, plain).Delete(any, plain).Options(any, plain);
    d->server.Post(any, withBody).Put(any, withBody).Patch(any, withBody);
    d->server.set_tcp_nodelay(true);
    d->server.set_keep_alive_timeout(1);
    // Binding listens at once: connections queue until the serving thread accepts them.
    d->port = d->server.bind_to_any_port("127.0.0.1");
    if (d->port <= 0)
        return;
    d->thread = std::thread([this] { d->server.listen_after_bind(); });
    // stop() only takes effect once the accept loop runs; wait for it (normally at once).
    for (int i = 0; i < 5000 && !d->server.is_running(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

TestHttpServer::~TestHttpServer() {
    stop();
}

bool TestHttpServer::isListening() const {
    return d->port > 0 && d->thread.joinable();
}

quint16 TestHttpServer::port() const {
    return d->port > 0 ? quint16(d->port) : 0;
}

QString TestHttpServer::baseUrl() const {
    return QStringLiteral("http://127.0.0.1:%1").arg(port());
}

void TestHttpServer::setAnswer(const Answer& answer) {
    QMutexLocker lock(&d->mutex);
    d->standing = answer;
    d->handler = nullptr;
}

void TestHttpServer::setHandler(Handler handler) {
    QMutexLocker lock(&d->mutex);
    d->handler = std::move(handler);
}

QList<TestHttpServer::Request> TestHttpServer::requests() const {
    QMutexLocker lock(&d->mutex);
    return d->requests;
}

void TestHttpServer::stop() {
    if (!d->thread.joinable())
        return;
    d->server.stop();
    d->thread.join();
}
