// The administration's JSON routes (AdminApi) behind the administrator's guard, so that they
// follow the web board's rules: a POST carries a JSON object, every request is checked for
// the administrator right. The handlers read their fields as text: a GET's from the address,
// a POST's from the body, where numbers are written as digits and true and false as yes and
// no.
#include "ApiGuards.h"
#include "WebAppRoutes.h"
#include "WebReplies.h"
#include "web/AdminApi.h"
#include <QUrlQuery>
#include <optional>

namespace {

// A JSON value as the text a form field would have held; nullopt for an array or object.
std::optional<QString> fieldText(const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Double: {
        const double d = value.toDouble();
        return d == double(qint64(d)) ? QString::number(qint64(d)) : QString::number(d);
    }
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case QJsonValue::Null:
        return QString();
    default:
        return std::nullopt;
    }
}

std::optional<AdminApi::Fields> fieldsOf(const ApiCall& call) {
    AdminApi::Fields fields;
    if (call.http.method != "POST") {
        for (const auto& [name, value] : QUrlQuery(QString::fromUtf8(call.http.query)).queryItems())
            fields.insert(name, call.query(name));
        return fields;
    }
    for (auto it = call.body.constBegin(); it != call.body.constEnd(); ++it) {
        const std::optional<QString> text = fieldText(it.value());
        if (!text)
            return std::nullopt;
        fields.insert(it.key(), *text);
    }
    return fields;
}

HttpReply run(Database& db, const AdminApi::Route& route, const ApiCall& call) {
    const std::optional<AdminApi::Fields> fields = fieldsOf(call);
    if (!fields)
        return WebReplies::Error(400, QStringLiteral("Fields hold text, numbers or true/false."));
    const AdminApi::Reply reply = AdminApi::Run(db, route, call.caller, *fields);
    return WebReplies::JsonDocument(reply.status, reply.body);
}

} // namespace

namespace WebApp {

WebRoutes AdminRoutes(Database& db) {
    WebRoutes routes;
    for (const AdminApi::Route& route : AdminApi::Routes())
        routes.push_back(ApiGuards::Administrator(
            db, route.method, QString::fromLatin1(route.path),
            [&db, &route](const ApiCall& call) { return run(db, route, call); }));
    return routes;
}

} // namespace WebApp
