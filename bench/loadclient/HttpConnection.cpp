#include "HttpConnection.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/read.hpp>
#include <cerrno>
#include <sys/socket.h>

namespace load {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::uint64_t kBodyLimit = 256u << 20; // a 5,000-person board is a few MB

// The failure's name in the report: a few plain words rather than the system's text.
std::string failureName(const boost::system::error_code& ec) {
    if (ec == beast::error::timeout)
        return "timeout";
    if (ec == asio::error::connection_refused)
        return "refused";
    if (ec == http::error::end_of_stream || ec == asio::error::eof ||
        ec == asio::error::connection_reset || ec == asio::error::broken_pipe ||
        ec == http::error::partial_message)
        return "closed";
    return ec.message();
}

} // namespace

HttpConnection::HttpConnection(asio::io_context& io, asio::ip::tcp::endpoint server,
                               std::uint64_t& opened)
    : stream_(io), server_(server), opened_(&opened) {}

void HttpConnection::exchange(const std::string& request, Clock::duration timeout, Done done) {
    request_ = &request;
    done_ = std::move(done);
    started_ = Clock::now();
    deadline_ = started_ + timeout;
    retried_ = false;
    start();
}

void HttpConnection::close() {
    boost::system::error_code ignored;
    stream_.socket().shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
    stream_.close();
}

// A kept connection is reused only while the server has not closed it: nothing to read yet.
bool HttpConnection::stillOpen() {
    if (!stream_.socket().is_open())
        return false;
    char byte = 0;
    const ssize_t n = ::recv(stream_.socket().native_handle(), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
}

void HttpConnection::start() {
    buffer_.clear();
    parser_.emplace();
    parser_->body_limit(kBodyLimit);
    reused_ = stillOpen();
    if (reused_) {
        send();
        return;
    }
    close();
    connect();
}

void HttpConnection::connect() {
    ++*opened_;
    stream_.expires_at(deadline_);
    stream_.async_connect(server_, [this](const boost::system::error_code& ec) {
        if (ec)
            return onFailure(ec);
        stream_.socket().set_option(asio::ip::tcp::no_delay(true)); // as libcurl does
        send();
    });
}

void HttpConnection::send() {
    stream_.expires_at(deadline_);
    asio::async_write(stream_, asio::buffer(*request_),
                      [this](const boost::system::error_code& ec, std::size_t) {
                          if (ec)
                              return onFailure(ec);
                          receive();
                      });
}

void HttpConnection::receive() {
    http::async_read(stream_, buffer_, *parser_,
                     [this](const boost::system::error_code& ec, std::size_t) {
                         if (ec)
                             return onFailure(ec);
                         onAnswer();
                     });
}

// A reused connection that ends before the first answer byte was closed by the server while
// idle: one more try on a new connection, as libcurl does.
void HttpConnection::onFailure(const boost::system::error_code& ec) {
    const bool stale = reused_ && !retried_ && !parser_->got_some() && ec != beast::error::timeout;
    close();
    if (stale) {
        retried_ = true;
        start();
        return;
    }
    Outcome outcome;
    outcome.failure = failureName(ec);
    finish(std::move(outcome));
}

void HttpConnection::onAnswer() {
    auto& answer = parser_->get();
    Outcome outcome;
    outcome.status = static_cast<int>(answer.result_int());
    if (outcome.status != 200)
        outcome.failure = "status " + std::to_string(outcome.status);
    for (const auto& field : answer) {
        if (field.name() != http::field::set_cookie)
            continue;
        const std::string_view value(field.value().data(), field.value().size());
        constexpr std::string_view prefix = "TavloSession=";
        if (value.substr(0, prefix.size()) == prefix)
            outcome.cookie =
                std::string(value.substr(prefix.size(), value.find(';') - prefix.size()));
    }
    outcome.body = std::move(answer.body());
    if (!answer.keep_alive())
        close();
    finish(std::move(outcome));
}

void HttpConnection::finish(Outcome outcome) {
    outcome.elapsed = Clock::now() - started_;
    stream_.expires_never();
    if (closeAfterEach_)
        close();
    Done done = std::move(done_);
    done_ = nullptr;
    done(std::move(outcome));
}

} // namespace load
