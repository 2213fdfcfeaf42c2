#pragma once

#include "SlowCounts.h"
#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <optional>

namespace load {

// A keep-alive connection that sends one good request and then stays open and silent,
// noting when the server closes it, and then opens again, so the pressure lasts the run.
class IdleConnection {
public:
    IdleConnection(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server,
                   const std::string& request, SlowCounts& counts,
                   std::chrono::steady_clock::duration timeout);

    void start();
    void stop();

private:
    void fail(const boost::system::error_code& ec);
    void waitForClose();

    boost::beast::tcp_stream stream_;
    boost::asio::ip::tcp::endpoint server_;
    const std::string& request_;
    SlowCounts& counts_;
    std::chrono::steady_clock::duration timeout_;
    boost::beast::flat_buffer buffer_;
    std::optional<boost::beast::http::response_parser<boost::beast::http::string_body>> parser_;
    std::array<char, 256> sink_{};
    std::chrono::steady_clock::time_point answeredAt_;
    bool stopped_ = false;
};

} // namespace load
