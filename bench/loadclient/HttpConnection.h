#pragma once

#include "Outcome.h"
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace load {

// One keep-alive HTTP/1.1 connection that runs one request at a time, the way libcurl does for
// the tray client: a connection the server has closed meanwhile is opened again, and a request
// that a reused connection drops before any answer byte is sent once more on a fresh one.
// Every request has one deadline for connecting, sending and the whole answer.
class HttpConnection {
public:
    using Done = std::function<void(Outcome)>;

    HttpConnection(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server,
                   std::uint64_t& opened);
    HttpConnection(const HttpConnection&) = delete;
    HttpConnection& operator=(const HttpConnection&) = delete;

    // Sends request (a complete HTTP request) and calls done once with how it ended.
    void exchange(const std::string& request, std::chrono::steady_clock::duration timeout,
                  Done done);
    bool busy() const { return static_cast<bool>(done_); }
    // Closes the connection after each answer, as a fresh libcurl handle per request does.
    void closeAfterEach() { closeAfterEach_ = true; }
    void close();

private:
    void start();
    void connect();
    void send();
    void receive();
    void onFailure(const boost::system::error_code& ec);
    void onAnswer();
    void finish(Outcome outcome);
    bool stillOpen();

    boost::beast::tcp_stream stream_;
    boost::asio::ip::tcp::endpoint server_;
    boost::beast::flat_buffer buffer_;
    std::optional<boost::beast::http::response_parser<boost::beast::http::string_body>> parser_;
    const std::string* request_ = nullptr;
    Done done_;
    std::chrono::steady_clock::time_point started_;
    std::chrono::steady_clock::time_point deadline_;
    bool reused_ = false;
    bool retried_ = false;
    bool closeAfterEach_ = false;
    std::uint64_t* opened_;
};

} // namespace load
