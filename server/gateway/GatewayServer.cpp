#include "GatewayServer.h"

#include "GatewayEndpoint.h"
#include "HttpFront.h"
#include "catalogue/CallerLookup.h"
#include "catalogue/LogText.h"
#include "catalogue/ServerSettings.h"
#include "store/Database.h"
#include "store/SessionStore.h"
#include "web/AdminApi.h"
#include "web/Pictures.h"
#include "web/ResetPage.h"
#include "web/WebBoard.h"
#include "webapp/StaticFiles.h"
#include "webapp/WebAppRoutes.h"
#include "webapp/WebReplies.h"
#include <QHash>
#include <QRegularExpression>
#include <QUrl>
#include <functional>

namespace {

using Route = std::function<HttpReply(const HttpRequest&)>;

// Pages are never framed by another site, load nothing from elsewhere, and aren't kept by
// browsers or proxies (they show a signed-in person's data).
HttpReply htmlReply(int status, const QString& html) {
    HttpReply reply{status, "text/html; charset=utf-8", html.toUtf8(), {}};
    reply.with("X-Frame-Options", "DENY")
        .with("Content-Security-Policy",
              "default-src 'none'; style-src 'unsafe-inline'; img-src 'self'; "
              "form-action 'self'; frame-ancestors 'none'; base-uri 'none'")
        .with("Cache-Control", "no-store")
        .with("X-Content-Type-Options", "nosniff");
    return reply;
}

template <class Page> HttpReply pageReply(const Page& page) {
    return htmlReply(page.status, page.html);
}

QString cookieOf(const HttpRequest& req) {
    return QString::fromLatin1(req.header("cookie"));
}

QByteArray sessionCookie(const QString& token) {
    return SessionStore::SetCookie(token, ServerSettings::Current().secureCookies);
}

// Fields of an application/x-www-form-urlencoded text, '+' read as a blank, UTF-8.
void addFormFields(const QByteArray& text, QHash<QString, QString>& fields) {
    for (const QByteArray& pair : text.split('&')) {
        if (pair.isEmpty())
            continue;
        const qsizetype equals = pair.indexOf('=');
        auto decode = [](QByteArray part) {
            return QString::fromUtf8(QByteArray::fromPercentEncoding(part.replace('+', ' ')));
        };
        fields.insert(decode(pair.left(equals < 0 ? pair.size() : equals)),
                      equals < 0 ? QString() : decode(pair.mid(equals + 1)));
    }
}

bool isForm(const HttpRequest& req) {
    return req.method == "POST" &&
           req.header("content-type").startsWith("application/x-www-form-urlencoded");
}

// The fields of a page request, from the address and the posted form alike.
QHash<QString, QString> fieldsOf(const HttpRequest& req) {
    QHash<QString, QString> fields;
    addFormFields(req.query, fields);
    if (isForm(req))
        addFormFields(req.body, fields);
    return fields;
}

// The posted form's fields only: a password never travels in a URL, where logs and
// histories keep it.
QHash<QString, QString> postedFields(const HttpRequest& req) {
    QHash<QString, QString> fields;
    if (req.method == "POST")
        addFormFields(req.body, fields);
    return fields;
}

// The JSON routes' folders, where errors are answered as JSON too.
bool isJsonPath(const QString& path) {
    return path.startsWith(QStringLiteral("/api/")) ||
           path.startsWith(QStringLiteral("/admin/api/"));
}

} // namespace

struct GatewayServer::Impl {
    Impl(Database& database, GatewayOptions options)
        : db(database), endpoint(database, options.cacheBytes),
          trustedProxies(std::move(options.trustedProxies)),
          front([this](const HttpRequest& req) { return handle(req); }, options.limits,
                [this] { openConnection(); }) {}

    // Each worker opens its database connection at start, not with its first request: a
    // server short of file handles later still answers from the connections it has.
    void openConnection() {
        try {
            db.connection();
        } catch (const std::exception&) {
            // the first request tries again
        }
    }

    HttpReply handle(HttpRequest req);
    void addRoutes();
    void add(const QString& methods, const QString& path, Route route);

    Database& db;
    GatewayEndpoint endpoint;
    QStringList trustedProxies;
    QHash<QString, Route> routes;    // "METHOD /path"
    QHash<QString, QString> allowed; // "/path" -> "GET, POST"
    HttpFront front;
};

void GatewayServer::Impl::add(const QString& methods, const QString& path, Route route) {
    QStringList allow = allowed.value(path).split(QStringLiteral(", "), Qt::SkipEmptyParts);
    for (const QString& method : methods.split(QLatin1Char(' '))) {
        routes.insert(method + QLatin1Char(' ') + path, route);
        allow << method;
    }
    allowed.insert(path, allow.join(QStringLiteral(", ")));
}

void GatewayServer::Impl::addRoutes() {
    for (WebRoute& route : WebApp::All(db))
        add(QString::fromLatin1(route.methods), route.path, std::move(route.handle));
    add("POST", "/XMLDemo.asp", [this](const HttpRequest& req) {
        const GatewayEndpoint::Reply reply = endpoint.Handle(req.body, req.peer, cookieOf(req));
        HttpReply out{reply.status, reply.contentType, reply.body, {}};
        if (!reply.setCookie.isEmpty())
            out.with("Set-Cookie", reply.setCookie);
        return out;
    });
    add("GET", "/healthz", [this](const HttpRequest&) {
        const bool ok = endpoint.Healthy();
        return HttpReply{ok ? 200 : 503,
                         "text/plain",
                         ok ? QByteArray("ok\n") : QByteArray("database unavailable\n"),
                         {}};
    });
    add("GET POST", "/reset", [this](const HttpRequest& req) {
        return pageReply(ResetPage::Handle(db, req.method == "POST", fieldsOf(req)));
    });
    add("POST", "/logincheck.asp", [this](const HttpRequest& req) {
        const WebBoard::Page page = WebBoard::LoginCheck(db, postedFields(req), req.peer);
        HttpReply reply = pageReply(page);
        if (page.signedInUser >= 0)
            reply.with("Set-Cookie", sessionCookie(SessionStore::Open(db, page.signedInUser)));
        return reply;
    });
    // The administration's page, whose script reads the person to open (?p=) from the
    // address; the sign-in form without a session.
    add("GET POST", "/Administrator.asp", [this](const HttpRequest& req) {
        const Caller caller = CallerOf(db, SessionStore::TokenIn(cookieOf(req)), req.peer);
        if (!caller.signedIn())
            return pageReply(WebBoard::SignInForm(401, QStringLiteral("Please sign in.")));
        if (!AdminApi::IsAdministrator(db, caller.userSys))
            return StaticFiles::Reply(403, QStringLiteral("admin-refused.html"));
        return StaticFiles::Reply(200, QStringLiteral("admin.html"));
    });
    add("GET POST", "/logout.asp", [this](const HttpRequest& req) {
        const QString token = SessionStore::TokenIn(cookieOf(req));
        if (!token.isEmpty())
            SessionStore::Close(db, token);
        return pageReply(WebBoard::SignInForm(200, QStringLiteral("You have signed out.")))
            .with("Set-Cookie", sessionCookie(QString()));
    });
}

HttpReply GatewayServer::Impl::handle(HttpRequest req) {
    if (trustedProxies.contains(req.peer)) {
        const QByteArray real = req.header("x-real-ip").trimmed();
        if (!real.isEmpty())
            req.peer = QString::fromLatin1(real);
    }
    try {
        const auto route =
            routes.constFind(QString::fromLatin1(req.method) + QLatin1Char(' ') + req.path);
        if (route != routes.constEnd())
            return (*route)(req);
        static const QRegularExpression picture(
            QStringLiteral("^/pictures/([A-Za-z0-9_-]{1,40})\\.png$"));
        if (const auto match = picture.match(req.path); match.hasMatch() && req.method == "GET") {
            const QByteArray png = Pictures::Png(match.captured(1));
            if (!png.isEmpty())
                return {200, "image/png", png, {}};
        }
        const auto methods = allowed.constFind(req.path);
        if (isJsonPath(req.path))
            return methods == allowed.constEnd()
                       ? WebReplies::Error(404, QStringLiteral("No such route."))
                       : WebReplies::Error(405, QStringLiteral("Not with this method."))
                             .with("Allow", methods->toLatin1());
        if (methods == allowed.constEnd())
            return htmlReply(404, QStringLiteral("<html><body><h1>404</h1></body></html>"));
        if (req.path == QStringLiteral("/logincheck.asp"))
            return pageReply(WebBoard::SignInForm(405, QString())).with("Allow", "POST");
        return htmlReply(405, QStringLiteral("<html><body><h1>405</h1></body></html>"))
            .with("Allow", methods->toLatin1());
    } catch (const std::exception& e) {
        LogLine(QStringLiteral("failed for %1: %2 %3: %4")
                    .arg(req.peer, QString::fromLatin1(req.method), req.path,
                         QString::fromLocal8Bit(e.what())));
        if (isJsonPath(req.path))
            return WebReplies::Error(500, QStringLiteral("Server error."));
        return htmlReply(500, QStringLiteral("<html><body><h1>Server error</h1></body></html>"));
    }
}

GatewayServer::GatewayServer(Database& db, GatewayOptions options)
    : d(std::make_unique<Impl>(db, std::move(options))) {
    d->addRoutes();
}

GatewayServer::~GatewayServer() = default;

bool GatewayServer::Bind(const QString& host, int port, QString* error) {
    std::string reason;
    if (d->front.Bind(host.toStdString(), port, &reason))
        return true;
    if (error)
        *error = QString::fromStdString(reason);
    return false;
}

int GatewayServer::Port() const {
    return d->front.Port();
}

void GatewayServer::Run() {
    d->front.Run();
}

void GatewayServer::Stop() {
    d->front.Stop();
}
