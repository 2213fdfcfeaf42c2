// The wall: a reception screen's read-only board, opened with a display token, and the
// administrator's routes that make, list and revoke those tokens.
#include "ApiGuards.h"
#include "BoardJson.h"
#include "WebAppRoutes.h"
#include "WebReplies.h"
#include "store/Database.h"
#include "store/WallTokens.h"
#include <QJsonArray>
#include <QSqlQuery>

namespace {

constexpr int kLongestLabel = 80;

// The token comes as "Authorization: Bearer <token>", so it is kept out of request lines.
QString bearerToken(const HttpRequest& req) {
    const QByteArray value = req.header("authorization").trimmed();
    return value.startsWith("Bearer ") ? QString::fromLatin1(value.mid(7).trimmed()) : QString();
}

QString organizationName(Database& db, qint64 organizationSys) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT name FROM organization WHERE organizationsys = ?"),
                          {organizationSys});
    return q.next() ? q.value(0).toString() : QString();
}

HttpReply wall(Database& db, const ApiCall& call) {
    const auto organizationSys = WallTokens::OrganizationOf(db, bearerToken(call.http));
    if (!organizationSys)
        return WebReplies::Error(401, QStringLiteral("This display's token is not valid."));
    return WebReplies::Json(
        200, {{QStringLiteral("organization"), organizationName(db, *organizationSys)},
              {QStringLiteral("people"), BoardJson::WallPeople(db, *organizationSys)}});
}

HttpReply listTokens(Database& db, const ApiCall& call) {
    QJsonArray tokens;
    for (const WallTokens::Listed& t : WallTokens::List(db, call.caller.organizationSys))
        tokens.append(QJsonObject{{QStringLiteral("id"), t.id},
                                  {QStringLiteral("label"), t.label},
                                  {QStringLiteral("createdAt"), t.createdAt},
                                  {QStringLiteral("createdBy"), t.createdBy},
                                  {QStringLiteral("revokedAt"), t.revokedAt}});
    return WebReplies::Json(200, {{QStringLiteral("tokens"), tokens}});
}

HttpReply makeToken(Database& db, const ApiCall& call) {
    const QString label = call.text(QStringLiteral("label")).trimmed();
    if (label.isEmpty() || label.size() > kLongestLabel)
        return WebReplies::Error(400, QStringLiteral("Name the display (1 to 80 characters)."));
    const WallTokens::Made made =
        WallTokens::Make(db, call.caller.organizationSys, label, call.caller.userSys);
    return WebReplies::Json(
        200, {{QStringLiteral("id"), made.id}, {QStringLiteral("token"), made.token}});
}

HttpReply revokeToken(Database& db, const ApiCall& call) {
    const qint64 id = call.number(QStringLiteral("id"));
    if (id < 0 || !WallTokens::Revoke(db, call.caller.organizationSys, id))
        return WebReplies::Error(404, QStringLiteral("No such display token."));
    return WebReplies::Json(200, {});
}

} // namespace

namespace WebApp {

WebRoutes WallRoutes(Database& db) {
    using namespace ApiGuards;
    return {Open(db, "GET", QStringLiteral("/api/wall"),
                 [&db](const ApiCall& call) { return wall(db, call); }),
            Administrator(db, "GET", QStringLiteral("/api/wall-tokens"),
                          [&db](const ApiCall& call) { return listTokens(db, call); }),
            Administrator(db, "POST", QStringLiteral("/api/wall-tokens"),
                          [&db](const ApiCall& call) { return makeToken(db, call); }),
            Administrator(db, "POST", QStringLiteral("/api/wall-tokens/revoke"),
                          [&db](const ApiCall& call) { return revokeToken(db, call); })};
}

} // namespace WebApp
