#include "GatewayServer.h"

#include "GatewayEndpoint.h"
#include "catalogue/CallerLookup.h"
#include "catalogue/ServerSettings.h"
#include "store/SessionStore.h"
#include "web/AdminPages.h"
#include "web/Pictures.h"
#include "web/ResetPage.h"
#include "web/WebBoard.h"
#include <httplib.h>
#include <sys/socket.h>

struct GatewayServer::Impl {
    explicit Impl(Database& database) : db(database), endpoint(database) {}
    Database& db;
    GatewayEndpoint endpoint;
    httplib::Server http;
    int port = 0;
    int socket = -1;
};

namespace {

constexpr int kWorkers = 48;
constexpr int kListenBacklog = 1024;
constexpr size_t kPayloadLimit = 16 * 1024;

// Pages are never framed by another site, load nothing from elsewhere, and aren't kept by
// browsers or proxies (they show a signed-in person's data).
void answerHtml(httplib::Response& res, int status, const QString& html) {
    res.status = status;
    res.set_header("X-Frame-Options", "DENY");
    res.set_header("Content-Security-Policy",
                   "default-src 'none'; style-src 'unsafe-inline'; img-src 'self'; "
                   "form-action 'self'; frame-ancestors 'none'; base-uri 'none'");
    res.set_header("Cache-Control", "no-store");
    res.set_header("X-Content-Type-Options", "nosniff");
    res.set_content(html.toStdString(), "text/html; charset=utf-8");
}

QString cookieOf(const httplib::Request& req) {
    return QString::fromStdString(req.get_header_value("Cookie"));
}

std::string sessionCookie(const QString& token) {
    return SessionStore::SetCookie(token, ServerSettings::Current().secureCookies).toStdString();
}

// The fields of a page request, from the query and the posted form alike.
QHash<QString, QString> fieldsOf(const httplib::Request& req) {
    QHash<QString, QString> fields;
    for (const auto& [name, value] : req.params)
        fields.insert(QString::fromStdString(name), QString::fromStdString(value));
    return fields;
}

// The posted form's fields only: a password never travels in a URL, where logs and
// histories keep it.
QHash<QString, QString> postedFields(const httplib::Request& req) {
    QHash<QString, QString> fields;
    if (req.method != "POST")
        return fields;
    httplib::Params body;
    httplib::detail::parse_query_text(req.body, body);
    for (const auto& [name, value] : body)
        fields.insert(QString::fromStdString(name), QString::fromStdString(value));
    return fields;
}

} // namespace

GatewayServer::GatewayServer(Database& db) : d(std::make_unique<Impl>(db)) {
    auto& http = d->http;
    http.set_tcp_nodelay(true);
    http.new_task_queue = [] { return new httplib::ThreadPool(kWorkers); };
    http.set_keep_alive_max_count(100);
    http.set_keep_alive_timeout(2);
    http.set_read_timeout(5, 0);
    http.set_write_timeout(5, 0);
    http.set_payload_max_length(kPayloadLimit);
    http.set_socket_options([this](socket_t sock) {
        int yes = 1;
        ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        d->socket = sock;
    });

    http.Post("/XMLDemo.asp", [this](const httplib::Request& req, httplib::Response& res) {
        const GatewayEndpoint::Reply reply =
            d->endpoint.Handle(QByteArray::fromStdString(req.body),
                               QString::fromStdString(req.remote_addr), cookieOf(req));
        if (!reply.setCookie.isEmpty())
            res.set_header("Set-Cookie", reply.setCookie.toStdString());
        res.status = reply.status;
        res.set_content(reply.body.toStdString(), reply.contentType.toStdString());
    });
    http.Get("/healthz", [this](const httplib::Request&, httplib::Response& res) {
        const bool ok = d->endpoint.Healthy();
        res.status = ok ? 200 : 503;
        res.set_content(ok ? "ok\n" : "database unavailable\n", "text/plain");
    });
    auto reset = [this](const httplib::Request& req, httplib::Response& res) {
        const QHash<QString, QString> fields = fieldsOf(req);
        const ResetPage::Page page = ResetPage::Handle(d->db, req.method == "POST", fields);
        answerHtml(res, page.status, page.html);
    };
    auto loginCheck = [this](const httplib::Request& req, httplib::Response& res) {
        const WebBoard::Page page =
            WebBoard::LoginCheck(d->db, postedFields(req), QString::fromStdString(req.remote_addr));
        if (page.signedInUser >= 0)
            res.set_header("Set-Cookie",
                           sessionCookie(SessionStore::Open(d->db, page.signedInUser)));
        answerHtml(res, page.status, page.html);
    };
    auto administrator = [this](const httplib::Request& req, httplib::Response& res) {
        const QHash<QString, QString> fields = fieldsOf(req);
        const Caller caller = CallerOf(d->db, SessionStore::TokenIn(cookieOf(req)),
                                       QString::fromStdString(req.remote_addr));
        const WebBoard::Page page = AdminPages::Administrator(d->db, caller.userSys, fields);
        answerHtml(res, page.status, page.html);
    };
    auto logout = [this](const httplib::Request& req, httplib::Response& res) {
        const QString token = SessionStore::TokenIn(cookieOf(req));
        if (!token.isEmpty())
            SessionStore::Close(d->db, token);
        res.set_header("Set-Cookie", sessionCookie(QString()));
        const WebBoard::Page page =
            WebBoard::SignInForm(200, QStringLiteral("You have signed out."));
        answerHtml(res, page.status, page.html);
    };
    http.Get("/Administrator.asp", administrator);
    http.Post("/Administrator.asp", administrator);
    http.Get("/logincheck.asp", [](const httplib::Request&, httplib::Response& res) {
        const WebBoard::Page page = WebBoard::SignInForm(405, QString());
        res.set_header("Allow", "POST");
        answerHtml(res, page.status, page.html);
    });
    http.Post("/logincheck.asp", loginCheck);
    http.Get("/logout.asp", logout);
    http.Post("/logout.asp", logout);
    http.Get("/reset", reset);
    http.Post("/reset", reset);
    http.Get(R"(/pictures/([A-Za-z0-9_-]{1,40})\.png)",
             [](const httplib::Request& req, httplib::Response& res) {
                 const QByteArray png = Pictures::Png(QString::fromStdString(req.matches[1]));
                 if (png.isEmpty()) {
                     res.status = 404;
                     return;
                 }
                 res.set_content(png.toStdString(), "image/png");
             });
    http.set_exception_handler(
        [](const httplib::Request&, httplib::Response& res, std::exception_ptr) {
            answerHtml(res, 500, QStringLiteral("<html><body><h1>Server error</h1></body></html>"));
        });
    // Answers the library makes itself (too large, malformed); a route's own error page has a
    // body and was logged by the route.
    http.set_error_handler([](const httplib::Request& req, httplib::Response& res) {
        if (!res.body.empty())
            return;
        if (res.status == 413 || res.status == 400)
            GatewayEndpoint::LogRefusal(QString::fromStdString(req.remote_addr),
                                        QStringLiteral("HTTP %1 for %2")
                                            .arg(res.status)
                                            .arg(QString::fromStdString(req.path)));
        answerHtml(res, res.status,
                   QStringLiteral("<html><body><h1>%1</h1></body></html>").arg(res.status));
    });
}

GatewayServer::~GatewayServer() = default;

bool GatewayServer::Bind(const QString& host, int port, QString* error) {
    const std::string h = host.toStdString();
    if (port == 0)
        d->port = d->http.bind_to_any_port(h);
    else
        d->port = d->http.bind_to_port(h, port) ? port : -1;
    if (d->port <= 0) {
        if (error)
            *error = QStringLiteral("cannot listen on %1:%2").arg(host).arg(port);
        return false;
    }
    // The library listens with a queue of 5; a busy office opens more connections at once.
    if (d->socket >= 0)
        ::listen(d->socket, kListenBacklog);
    return true;
}

int GatewayServer::Port() const {
    return d->port;
}

void GatewayServer::Run() {
    d->http.listen_after_bind();
}

void GatewayServer::Stop() {
    d->http.stop();
}
