#include "ApiGuards.h"

#include "WebReplies.h"
#include "catalogue/CallerLookup.h"
#include "store/SessionStore.h"
#include "web/AdminApi.h"
#include <QJsonDocument>
#include <optional>

namespace ApiGuards {
namespace {

enum class Need { Nobody, Session, Administrator };

bool isJson(const HttpRequest& req) {
    const QByteArray type = req.header("content-type").trimmed().toLower();
    return type == "application/json" || type.startsWith("application/json;");
}

// The reply that turns the request away, or nothing when it may go on.
std::optional<HttpReply> refusal(Database& db, Need need, ApiCall& call) {
    const HttpRequest& req = call.http;
    if (req.method == "POST") {
        if (!isJson(req))
            return WebReplies::Error(415, QStringLiteral("Send JSON (application/json)."));
        QJsonParseError error;
        const QJsonDocument doc = QJsonDocument::fromJson(req.body, &error);
        if (error.error != QJsonParseError::NoError || !doc.isObject())
            return WebReplies::Error(400, QStringLiteral("The body is no JSON object."));
        call.body = doc.object();
    }
    call.caller =
        CallerOf(db, SessionStore::TokenIn(QString::fromLatin1(req.header("cookie"))), req.peer);
    if (need == Need::Nobody)
        return std::nullopt;
    if (!call.caller.signedIn())
        return WebReplies::Error(401, QStringLiteral("Please sign in."));
    call.administrator = AdminApi::IsAdministrator(db, call.caller.userSys);
    if (need == Need::Administrator && !call.administrator)
        return WebReplies::Error(403, QStringLiteral("You do not have administrator rights."));
    return std::nullopt;
}

WebRoute guarded(Database& db, Need need, QByteArray methods, QString path, Handler handler) {
    auto handle = [&db, need, handler = std::move(handler)](const HttpRequest& req) {
        ApiCall call{req, {}, false, {}};
        if (auto refused = refusal(db, need, call))
            return *refused;
        return handler(call);
    };
    return {std::move(methods), std::move(path), std::move(handle)};
}

} // namespace

WebRoute Open(Database& db, QByteArray methods, QString path, Handler handler) {
    return guarded(db, Need::Nobody, std::move(methods), std::move(path), std::move(handler));
}

WebRoute SignedIn(Database& db, QByteArray methods, QString path, Handler handler) {
    return guarded(db, Need::Session, std::move(methods), std::move(path), std::move(handler));
}

WebRoute Administrator(Database& db, QByteArray methods, QString path, Handler handler) {
    return guarded(db, Need::Administrator, std::move(methods), std::move(path),
                   std::move(handler));
}

} // namespace ApiGuards
