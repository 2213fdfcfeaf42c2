#include "WebReplies.h"

#include <QJsonDocument>

namespace WebReplies {

HttpReply& Secured(HttpReply& reply) {
    return reply.with("X-Frame-Options", "DENY")
        .with("Content-Security-Policy",
              "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
              "img-src 'self'; form-action 'self'; frame-ancestors 'none'; base-uri 'none'")
        .with("Cache-Control", "no-store")
        .with("X-Content-Type-Options", "nosniff")
        .with("Referrer-Policy", "no-referrer");
}

HttpReply Json(int status, const QJsonObject& body) {
    return JsonDocument(status, QJsonDocument(body));
}

HttpReply JsonDocument(int status, const QJsonDocument& body) {
    HttpReply reply{
        status, "application/json; charset=utf-8", body.toJson(QJsonDocument::Compact), {}};
    return Secured(reply);
}

HttpReply Error(int status, const QString& reason) {
    return Json(status, QJsonObject{{QStringLiteral("error"), reason}});
}

HttpReply File(const QByteArray& contentType, const QByteArray& body) {
    HttpReply reply{200, contentType, body, {}};
    return Secured(reply);
}

} // namespace WebReplies
