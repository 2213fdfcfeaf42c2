#include "HttpFront.h"

#include "AddressCounts.h"
#include "HttpConnection.h"
#include "WorkQueue.h"
#include "catalogue/LogText.h"
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/write.hpp>
#include <csignal>
#include <thread>
#include <vector>

namespace net = boost::asio;
using tcp = net::ip::tcp;

namespace {

constexpr int kListenBacklog = 1024;
// After running out of file handles, accepting waits this long before trying again.
constexpr auto kAcceptPause = std::chrono::milliseconds(100);

const char kTooManyConnections[] =
    "HTTP/1.1 503 Service Unavailable\r\nContent-Type: text/plain\r\nContent-Length: 37\r\n"
    "Retry-After: 5\r\nConnection: close\r\n\r\nToo many connections from one place\r\n";

} // namespace

struct HttpFront::Impl {
    Impl(Handler handler, HttpLimits limits, std::function<void()> onWorkerStart)
        : counts(limits.connectionsPerAddress), state{std::move(handler), limits, queue, counts},
          ioc(limits.ioThreads), acceptor(ioc), pause(ioc), stopSignals(ioc, SIGINT, SIGTERM),
          queue(limits.workers, limits.queue, std::move(onWorkerStart)) {}

    void accept();
    void onAccept(boost::system::error_code ec, tcp::socket socket);

    // Declared so that the workers are joined first, then the I/O side goes, then what the
    // connections count on.
    AddressCounts counts;
    HttpFrontState state;
    net::io_context ioc;
    tcp::acceptor acceptor;
    net::steady_timer pause;
    net::signal_set stopSignals;
    WorkQueue queue;
    int port = 0;
    bool outOfHandles = false;
};

void HttpFront::Impl::accept() {
    acceptor.async_accept(net::make_strand(ioc),
                          [this](boost::system::error_code ec, tcp::socket socket) {
                              onAccept(ec, std::move(socket));
                          });
}

void HttpFront::Impl::onAccept(boost::system::error_code ec, tcp::socket socket) {
    if (ec == net::error::operation_aborted || !acceptor.is_open())
        return;
    if (ec) {
        // Out of file handles (or another passing failure): wait a little and go on, so the
        // server comes back by itself once handles are free again.
        if (!outOfHandles)
            LogLine(QStringLiteral("cannot accept connections: %1")
                        .arg(QString::fromStdString(ec.message())));
        outOfHandles = true;
        pause.expires_after(kAcceptPause);
        pause.async_wait([this](boost::system::error_code) { accept(); });
        return;
    }
    if (outOfHandles)
        LogLine(QStringLiteral("accepting connections again"));
    outOfHandles = false;
    boost::system::error_code peerError;
    const auto endpoint = socket.remote_endpoint(peerError);
    std::string peer = peerError ? std::string("unknown") : endpoint.address().to_string();
    if (!counts.Take(peer)) {
        boost::system::error_code ignored;
        socket.non_blocking(true, ignored);
        socket.write_some(net::buffer(kTooManyConnections, sizeof kTooManyConnections - 1),
                          ignored);
        socket.close(ignored);
    } else {
        std::make_shared<HttpConnection>(std::move(socket), std::move(peer), state)->Start();
    }
    accept();
}

HttpFront::HttpFront(Handler handler, HttpLimits limits, std::function<void()> onWorkerStart)
    : d(std::make_unique<Impl>(std::move(handler), limits, std::move(onWorkerStart))) {}

HttpFront::~HttpFront() {
    Stop();
}

bool HttpFront::Bind(const std::string& host, int port, std::string* error) {
    boost::system::error_code ec;
    tcp::resolver resolver(d->ioc);
    const auto found = resolver.resolve(host, std::to_string(port), ec);
    if (!ec && found.empty())
        ec = net::error::host_not_found;
    if (!ec) {
        const tcp::endpoint endpoint = found.begin()->endpoint();
        d->acceptor.open(endpoint.protocol(), ec);
        if (!ec)
            d->acceptor.set_option(net::socket_base::reuse_address(true), ec);
        if (!ec)
            d->acceptor.bind(endpoint, ec);
        if (!ec)
            d->acceptor.listen(kListenBacklog, ec);
    }
    if (ec) {
        if (error)
            *error = "cannot listen on " + host + ":" + std::to_string(port) + ": " + ec.message();
        d->acceptor.close(ec);
        return false;
    }
    d->port = d->acceptor.local_endpoint().port();
    return true;
}

int HttpFront::Port() const {
    return d->port;
}

void HttpFront::Run() {
    d->stopSignals.async_wait([this](boost::system::error_code ec, int) {
        if (!ec)
            Stop();
    });
    d->accept();
    std::vector<std::thread> others;
    for (int i = 1; i < d->state.limits.ioThreads; ++i)
        others.emplace_back([this] { d->ioc.run(); });
    d->ioc.run();
    for (auto& thread : others)
        thread.join();
}

void HttpFront::Stop() {
    net::post(d->ioc, [this] {
        boost::system::error_code ignored;
        d->acceptor.close(ignored);
        d->stopSignals.cancel(ignored);
        d->pause.cancel();
    });
    d->ioc.stop();
}
