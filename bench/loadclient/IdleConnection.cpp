#include "IdleConnection.h"

#include <boost/asio/write.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/http/read.hpp>

namespace load {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using Clock = std::chrono::steady_clock;

IdleConnection::IdleConnection(asio::io_context& io, asio::ip::tcp::endpoint server,
                               const std::string& request, SlowCounts& counts,
                               Clock::duration timeout)
    : stream_(io), server_(server), request_(request), counts_(counts), timeout_(timeout) {}

void IdleConnection::start() {
    parser_.emplace();
    buffer_.clear();
    stream_.expires_after(timeout_);
    stream_.async_connect(server_, [this](const boost::system::error_code& ec) {
        if (ec)
            return fail(ec);
        asio::async_write(stream_, asio::buffer(request_),
                          [this](const boost::system::error_code& ec, std::size_t) {
                              if (ec)
                                  return fail(ec);
                              http::async_read(
                                  stream_, buffer_, *parser_,
                                  [this](const boost::system::error_code& ec, std::size_t) {
                                      if (ec)
                                          return fail(ec);
                                      waitForClose();
                                  });
                          });
    });
}

void IdleConnection::fail(const boost::system::error_code& ec) {
    if (stopped_)
        return;
    ++counts_.idleFailures[ec == boost::beast::error::timeout ? "timeout" : ec.message()];
    stream_.close();
}

// Silent from here on; a read ends only when the server closes the connection (or sends
// something it shouldn't).
void IdleConnection::waitForClose() {
    if (parser_->get().result_int() == 200)
        ++counts_.idleAnswered;
    else
        ++counts_.idleFailures["status " + std::to_string(parser_->get().result_int())];
    answeredAt_ = Clock::now();
    stream_.expires_never();
    stream_.async_read_some(
        asio::buffer(sink_), [this](const boost::system::error_code&, std::size_t) {
            if (stopped_)
                return;
            counts_.idleClosedAfter.push_back(
                std::chrono::duration<double>(Clock::now() - answeredAt_).count());
            stream_.close();
            start();
        });
}

void IdleConnection::stop() {
    stopped_ = true;
    stream_.close();
}

} // namespace load
