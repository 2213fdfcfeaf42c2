// Signing in and out of the web board, and who is signed in.
#include "ApiGuards.h"
#include "BoardJson.h"
#include "WebAppRoutes.h"
#include "WebReplies.h"
#include "catalogue/ServerSettings.h"
#include "store/Database.h"
#include "store/SessionStore.h"
#include "web/WebSignIn.h"
#include <QJsonArray>
#include <QSqlQuery>

namespace {

QByteArray sessionCookie(const QString& token) {
    return SessionStore::SetCookie(token, ServerSettings::Current().secureCookies);
}

HttpReply signIn(Database& db, const ApiCall& call) {
    const QString user = call.text(QStringLiteral("user"));
    const QString password = call.text(QStringLiteral("password"));
    if (user.isEmpty() || user.size() > 64 || password.size() > 64)
        return WebReplies::Error(400, QStringLiteral("Give a user name and a password."));
    const WebSignIn account = WebSignIn::Check(db, user, password, call.http.peer);
    if (!account.good())
        return WebReplies::Error(account.status, account.reason);
    return WebReplies::Json(200, {{QStringLiteral("organization"), account.organizationName}})
        .with("Set-Cookie", sessionCookie(SessionStore::Open(db, account.userSys)));
}

HttpReply signOut(Database& db, const ApiCall& call) {
    const QString token = SessionStore::TokenIn(QString::fromLatin1(call.http.header("cookie")));
    if (!token.isEmpty())
        SessionStore::Close(db, token);
    return WebReplies::Json(200, {}).with("Set-Cookie", sessionCookie(QString()));
}

HttpReply me(Database& db, const ApiCall& call) {
    const Caller& caller = call.caller;
    QSqlQuery q = db.exec(QStringLiteral("SELECT c.firstname, c.lastname, o.name FROM contact c "
                                         "JOIN organization o ON o.organizationsys = "
                                         "c.organizationsys WHERE c.contactsys = ?"),
                          {caller.contactSys});
    q.next();
    return WebReplies::Json(
        200,
        {{QStringLiteral("user"), caller.userSys},
         {QStringLiteral("contact"), caller.contactSys},
         {QStringLiteral("name"), q.value(0).toString() + QLatin1Char(' ') + q.value(1).toString()},
         {QStringLiteral("organization"), q.value(2).toString()},
         {QStringLiteral("mayChangeOthers"), caller.mayChangeOthersStatus},
         {QStringLiteral("administrator"), call.administrator},
         {QStringLiteral("statuses"), BoardJson::Statuses(db, caller.organizationSys)}});
}

} // namespace

namespace WebApp {

WebRoutes SessionRoutes(Database& db) {
    using namespace ApiGuards;
    return {Open(db, "POST", QStringLiteral("/api/signin"),
                 [&db](const ApiCall& call) { return signIn(db, call); }),
            Open(db, "POST", QStringLiteral("/api/signout"),
                 [&db](const ApiCall& call) { return signOut(db, call); }),
            SignedIn(db, "GET", QStringLiteral("/api/me"),
                     [&db](const ApiCall& call) { return me(db, call); })};
}

} // namespace WebApp
