#pragma once

#include "HttpLimits.h"
#include "HttpReply.h"
#include "HttpRequest.h"
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <functional>
#include <memory>
#include <optional>

class AddressCounts;
class WorkQueue;

// What every connection of one front shares.
struct HttpFrontState {
    std::function<HttpReply(const HttpRequest&)> handler;
    HttpLimits limits;
    WorkQueue& queue;
    AddressCounts& counts;
};

// One client connection: reads requests on the I/O threads without ever blocking one, hands
// each whole request to a worker, and writes the answer back. A connection that is idle too
// long, or whose request doesn't arrive whole by its deadline, is closed.
class HttpConnection : public std::enable_shared_from_this<HttpConnection> {
public:
    HttpConnection(boost::asio::ip::tcp::socket socket, std::string peer, HttpFrontState& state);
    ~HttpConnection();
    void Start();

private:
    using Request = boost::beast::http::request<boost::beast::http::string_body>;
    using Response = boost::beast::http::response<boost::beast::http::string_body>;

    void awaitRequest();
    void readHeader();
    void onHeader(boost::beast::error_code ec);
    void readBody();
    void dispatch();
    void answer(HttpReply reply);
    void refuse(int status, const char* text); // and close once written
    void close();
    HttpRequest toRequest(Request&& request) const;

    boost::beast::tcp_stream m_stream;
    boost::beast::flat_buffer m_buffer;
    std::optional<boost::beast::http::request_parser<boost::beast::http::string_body>> m_parser;
    std::shared_ptr<Response> m_response;
    std::string m_peer;
    HttpFrontState& m_state;
    bool m_keepAlive = false;
};
