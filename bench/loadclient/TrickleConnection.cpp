#include "TrickleConnection.h"

#include <boost/asio/write.hpp>
#include <boost/beast/core/error.hpp>

namespace load {

namespace asio = boost::asio;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto kEvery = std::chrono::seconds(4);

} // namespace

TrickleConnection::TrickleConnection(asio::io_context& io, asio::ip::tcp::endpoint server,
                                     std::string header, SlowCounts& counts,
                                     Clock::duration timeout)
    : stream_(io), server_(server), timer_(io), header_(std::move(header)), counts_(counts),
      timeout_(timeout) {}

void TrickleConnection::start() {
    timer_.expires_after(Clock::duration::zero());
    tick();
}

void TrickleConnection::stop() {
    stopped_ = true;
    timer_.cancel();
    stream_.close();
}

char TrickleConnection::byteAt(std::size_t index) const {
    return index < header_.size() ? header_[index] : 'x';
}

void TrickleConnection::tick() {
    if (stopped_)
        return;
    if (connected_)
        sendByte();
    else if (!connecting_)
        connect();
    timer_.expires_at(timer_.expiry() + kEvery);
    timer_.async_wait([this](const boost::system::error_code& ec) {
        if (!ec)
            tick();
    });
}

// A new connection starts the header again.
void TrickleConnection::connect() {
    connecting_ = true;
    sent_ = 0;
    ++counts_.trickleConnects;
    stream_.expires_after(timeout_);
    stream_.async_connect(server_, [this](const boost::system::error_code& ec) {
        connecting_ = false;
        if (stopped_)
            return;
        if (ec) {
            ++counts_.trickleFailures[ec == boost::beast::error::timeout ? "connect timeout"
                                                                         : ec.message()];
            stream_.close();
            return;
        }
        connected_ = true;
        stream_.expires_never();
        watch();
        sendByte();
    });
}

void TrickleConnection::sendByte() {
    byte_ = byteAt(sent_);
    stream_.socket().async_send(asio::buffer(&byte_, 1),
                                [this](const boost::system::error_code& ec, std::size_t n) {
                                    if (stopped_ || !connected_)
                                        return;
                                    if (ec)
                                        return closed(false);
                                    sent_ += n;
                                    counts_.trickleBytes += n;
                                });
}

// Anything the server sends (an error answer) or its closing ends this connection.
void TrickleConnection::watch() {
    stream_.async_read_some(asio::buffer(sink_),
                            [this](const boost::system::error_code& ec, std::size_t n) {
                                if (stopped_ || !connected_)
                                    return;
                                if (!ec && n > 0)
                                    return closed(true);
                                closed(false);
                            });
}

void TrickleConnection::closed(bool answered) {
    connected_ = false;
    ++counts_.trickleClosed;
    if (answered)
        ++counts_.trickleAnswered;
    stream_.close();
}

} // namespace load
