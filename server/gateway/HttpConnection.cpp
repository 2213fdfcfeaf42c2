#include "HttpConnection.h"

#include "AddressCounts.h"
#include "WorkQueue.h"
#include "catalogue/LogText.h"
#include <QUrl>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>

namespace beast = boost::beast;
namespace http = beast::http;
namespace net = boost::asio;

namespace {

constexpr std::size_t kReadChunk = 4096;

std::string lower(beast::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

} // namespace

HttpConnection::HttpConnection(net::ip::tcp::socket socket, std::string peer, HttpFrontState& state)
    : m_stream(std::move(socket)), m_peer(std::move(peer)), m_state(state) {}

HttpConnection::~HttpConnection() {
    m_state.counts.Give(m_peer);
}

void HttpConnection::Start() {
    net::dispatch(m_stream.get_executor(), [self = shared_from_this()] { self->awaitRequest(); });
}

// Between requests the connection only waits for a first byte, for as long as an idle
// connection may stay; the request's own deadline starts with that byte.
void HttpConnection::awaitRequest() {
    if (m_buffer.size() > 0) {
        readHeader();
        return;
    }
    m_stream.expires_after(m_state.limits.idleTimeout);
    m_stream.async_read_some(m_buffer.prepare(kReadChunk),
                             [self = shared_from_this()](beast::error_code ec, std::size_t n) {
                                 if (ec)
                                     return self->close();
                                 self->m_buffer.commit(n);
                                 self->readHeader();
                             });
}

void HttpConnection::readHeader() {
    m_parser.emplace();
    m_parser->header_limit(std::uint32_t(m_state.limits.headerBytes));
    m_parser->body_limit(m_state.limits.bodyBytes);
    m_stream.expires_after(m_state.limits.requestDeadline);
    http::async_read_header(
        m_stream, m_buffer, *m_parser,
        [self = shared_from_this()](beast::error_code ec, std::size_t) { self->onHeader(ec); });
}

void HttpConnection::onHeader(beast::error_code ec) {
    if (ec == http::error::header_limit)
        return refuse(431, "Request header too large");
    if (ec == http::error::body_limit) // a declared length already over the limit
        return refuse(413, "Request body too large");
    if (ec == beast::error::timeout || ec == http::error::end_of_stream || ec == net::error::eof ||
        ec == net::error::connection_reset || ec == net::error::operation_aborted)
        return close();
    if (ec)
        return refuse(400, "Bad request");
    const auto& header = m_parser->get();
    if (std::size_t(std::distance(header.begin(), header.end())) > m_state.limits.headerFields)
        return refuse(431, "Too many request header fields");
    if (m_parser->content_length() && *m_parser->content_length() > m_state.limits.bodyBytes)
        return refuse(413, "Request body too large");
    if (beast::iequals(header[http::field::expect], "100-continue")) {
        auto go = std::make_shared<http::response<http::empty_body>>(http::status::continue_, 11);
        http::async_write(m_stream, *go,
                          [self = shared_from_this(), go](beast::error_code ec, std::size_t) {
                              if (ec)
                                  return self->close();
                              self->readBody();
                          });
        return;
    }
    readBody();
}

void HttpConnection::readBody() {
    if (m_parser->is_done())
        return dispatch();
    http::async_read(m_stream, m_buffer, *m_parser,
                     [self = shared_from_this()](beast::error_code ec, std::size_t) {
                         if (ec == http::error::body_limit)
                             return self->refuse(413, "Request body too large");
                         if (ec)
                             return self->close();
                         self->dispatch();
                     });
}

// The whole request is here: a worker answers it, unless all are busy and the queue is full.
void HttpConnection::dispatch() {
    m_stream.expires_never();
    m_keepAlive = m_parser->get().keep_alive();
    auto job = [self = shared_from_this(), request = toRequest(m_parser->release())]() {
        HttpReply reply;
        try {
            reply = self->m_state.handler(request);
        } catch (...) {
            reply = {500, "text/plain", "Server error\n", {}};
        }
        net::post(self->m_stream.get_executor(),
                  [self, reply = std::move(reply)]() mutable { self->answer(std::move(reply)); });
    };
    if (!m_state.queue.TryPost(std::move(job)))
        refuse(503, "Server busy, try again");
}

void HttpConnection::answer(HttpReply reply) {
    m_response = std::make_shared<Response>(http::status(reply.status), 11);
    for (const auto& [name, value] : reply.headers)
        m_response->insert(beast::string_view(name.constData(), std::size_t(name.size())),
                           beast::string_view(value.constData(), std::size_t(value.size())));
    if (!reply.contentType.isEmpty())
        m_response->set(http::field::content_type, reply.contentType.toStdString());
    m_response->body().assign(reply.body.constData(), std::size_t(reply.body.size()));
    m_response->keep_alive(m_keepAlive);
    m_response->prepare_payload();
    m_stream.expires_after(m_state.limits.writeDeadline);
    http::async_write(m_stream, *m_response,
                      [self = shared_from_this()](beast::error_code ec, std::size_t) {
                          self->m_response.reset();
                          if (ec || !self->m_keepAlive)
                              return self->close();
                          self->awaitRequest();
                      });
}

void HttpConnection::refuse(int status, const char* text) {
    m_keepAlive = false;
    if (status != 503) // a busy server says so in its figures, not a line per request
        LogLine(QStringLiteral("refused from %1: HTTP %2 (%3)")
                    .arg(QString::fromStdString(m_peer))
                    .arg(status)
                    .arg(QLatin1String(text)));
    HttpReply reply{status, "text/plain", QByteArray(text) + '\n', {}};
    if (status == 503)
        reply.with("Retry-After", "1");
    answer(std::move(reply));
}

void HttpConnection::close() {
    beast::error_code ignored;
    m_stream.socket().shutdown(net::ip::tcp::socket::shutdown_both, ignored);
    m_stream.close();
}

HttpRequest HttpConnection::toRequest(Request&& request) const {
    HttpRequest out;
    out.method = QByteArray::fromStdString(std::string(request.method_string()));
    const beast::string_view target = request.target();
    const std::size_t question = target.find('?');
    const beast::string_view path = target.substr(0, question);
    out.path = QUrl::fromPercentEncoding(QByteArray(path.data(), qsizetype(path.size())));
    if (question != beast::string_view::npos)
        out.query = QByteArray::fromStdString(std::string(target.substr(question + 1)));
    out.body = QByteArray::fromStdString(std::move(request.body()));
    out.peer = QString::fromStdString(m_peer);
    out.headers.reserve(std::size_t(std::distance(request.begin(), request.end())));
    for (const auto& field : request)
        out.headers.emplace_back(QByteArray::fromStdString(lower(field.name_string())),
                                 QByteArray::fromStdString(std::string(field.value())));
    return out;
}
