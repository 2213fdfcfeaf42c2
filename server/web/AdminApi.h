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
// error reports and the status history. The web routes put them behind the administrator's
// guard, which checks the caller's rights on every request (no session 401, anyone but an
// administrator 403) and takes JSON bodies only. Bad input answers 400 with {"error": reason}
// and changes nothing.
namespace AdminApi {

// Whether the user holds the administrator right (10000000).
bool IsAdministrator(Database& db, qint64 userSys);

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

// Runs a route's handler for an administrator whose rights were checked; bad input answers 400.
Reply Run(Database& db, const Route& route, const Caller& caller, const Fields& fields);

} // namespace AdminApi
