// The board as the signed-in person sees it, status changes made from the web, and the
// recent status history of a person.
#include "ApiGuards.h"
#include "BoardJson.h"
#include "StatusRequest.h"
#include "WebAppRoutes.h"
#include "WebReplies.h"
#include "store/Database.h"
#include <QJsonArray>
#include <QSqlQuery>

namespace {

constexpr int kHistoryRows = 20;

HttpReply board(Database& db, const ApiCall& call) {
    const Caller& caller = call.caller;
    return WebReplies::Json(
        200, {{QStringLiteral("groups"), BoardJson::Groups(db, caller.organizationSys)},
              {QStringLiteral("people"),
               BoardJson::People(db, caller.userSys, caller.organizationSys)}});
}

HttpReply setStatus(Database& db, const ApiCall& call) {
    const StatusRequest request(db, call);
    if (request.status() != 200)
        return WebReplies::Error(request.status(), request.reason());
    StatusChange::Apply(db, request.change());
    return WebReplies::Json(200, {});
}

// One's own history; a colleague's with the right to change others' status or as an
// administrator.
bool mayReadHistory(Database& db, const ApiCall& call, qint64 contactSys) {
    const Caller& caller = call.caller;
    if (contactSys == caller.contactSys)
        return true;
    return (caller.mayChangeOthersStatus || call.administrator) &&
           db.exec(QStringLiteral("SELECT 1 FROM contact WHERE contactsys = ? AND "
                                  "organizationsys = ?"),
                   {contactSys, caller.organizationSys})
               .next();
}

QJsonArray historyOf(Database& db, qint64 contactSys) {
    QSqlQuery q = db.exec(
        QStringLiteral("SELECT h.changedat, h.via, fs.statustext, ts.statustext, h.tocomment, "
                       "bc.firstname, bc.lastname FROM statushistory h "
                       "LEFT JOIN status fs ON fs.statussys = h.fromstatus "
                       "LEFT JOIN status ts ON ts.statussys = h.tostatus "
                       "LEFT JOIN users bu ON bu.usersys = h.changedby "
                       "LEFT JOIN contact bc ON bc.contactsys = bu.contactsys "
                       "WHERE h.contactsys = ? ORDER BY h.changedat DESC, h.historysys DESC "
                       "LIMIT %1")
            .arg(kHistoryRows),
        {contactSys});
    QJsonArray rows;
    while (q.next())
        rows.append(QJsonObject{{QStringLiteral("at"), q.value(0).toString()},
                                {QStringLiteral("via"), q.value(1).toString()},
                                {QStringLiteral("from"), q.value(2).toString()},
                                {QStringLiteral("to"), q.value(3).toString()},
                                {QStringLiteral("comment"), q.value(4).toString()},
                                {QStringLiteral("by"), q.value(5).toString() + QLatin1Char(' ') +
                                                           q.value(6).toString()}});
    return rows;
}

HttpReply history(Database& db, const ApiCall& call) {
    bool ok = false;
    const qint64 contactSys = call.query(QStringLiteral("contact")).toLongLong(&ok);
    if (!ok)
        return WebReplies::Error(400, QStringLiteral("Name the person by their contact number."));
    if (!mayReadHistory(db, call, contactSys))
        return WebReplies::Error(403, QStringLiteral("You may not read this person's history."));
    return WebReplies::Json(200, {{QStringLiteral("history"), historyOf(db, contactSys)}});
}

} // namespace

namespace WebApp {

WebRoutes BoardRoutes(Database& db) {
    using namespace ApiGuards;
    return {SignedIn(db, "GET", QStringLiteral("/api/board"),
                     [&db](const ApiCall& call) { return board(db, call); }),
            SignedIn(db, "POST", QStringLiteral("/api/status"),
                     [&db](const ApiCall& call) { return setStatus(db, call); }),
            SignedIn(db, "GET", QStringLiteral("/api/history"),
                     [&db](const ApiCall& call) { return history(db, call); })};
}

} // namespace WebApp
