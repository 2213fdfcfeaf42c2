#pragma once

#include <QByteArray>
#include <QHash>
#include <QJsonDocument>
#include <QList>
#include <QString>

class Database;
struct Caller;

// The web administration's JSON routes under /admin/api/, for administrators of an
// organisation: people, groups, locations, statuses, chat, the client release, the outbox,
// error reports and the status history. Every request checks the caller's rights on the
// server: no session answers 401, anyone but an administrator 403. Bad input answers 400 with
// {"error": reason} and changes nothing.
namespace AdminApi {

struct Reply {
    int status = 200;
    QJsonDocument body;
};

using Fields = QHash<QString, QString>;

struct Route {
    const char* method; // GET or POST
    const char* path;
    Reply (*handler)(Database& db, qint64 organizationSys, qint64 userSys, const Fields& fields);
};

// Every route, for the gateway to register.
const QList<Route>& Routes();

// Runs a route's handler for the caller, once their rights are checked.
Reply Run(Database& db, const Route& route, const Caller& caller, const Fields& fields);

} // namespace AdminApi
