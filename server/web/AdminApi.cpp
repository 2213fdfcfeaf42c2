#include "AdminApi.h"

#include "AdminApiHandlers.h"
#include "catalogue/Caller.h"
#include "catalogue/ServerSettings.h"
#include "setup/BadInput.h"
#include "setup/People.h"
#include "setup/Welcome.h"
#include "store/Database.h"

namespace AdminApi {

bool IsAdministrator(Database& db, qint64 userSys) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT 1 FROM usersecurity WHERE usersys = ? AND "
                                         "securityobjectsys = ?"),
                          {userSys, People::kAdministratorRight});
    return q.next();
}

const QList<Route>& Routes() {
    static const QList<Route> routes = {
        {"GET", "/admin/api/people", listPeople},
        {"GET", "/admin/api/person", onePerson},
        {"POST", "/admin/api/person/add", addPerson},
        {"POST", "/admin/api/person/edit", editPerson},
        {"POST", "/admin/api/person/disable", disablePerson},
        {"POST", "/admin/api/person/remove", removePerson},
        {"POST", "/admin/api/person/rights", setRights},
        {"POST", "/admin/api/person/reset", sendResetLink},
        {"GET", "/admin/api/groups", listGroups},
        {"POST", "/admin/api/group/add", addGroup},
        {"POST", "/admin/api/group/member", setGroupMember},
        {"GET", "/admin/api/locations", listLocations},
        {"POST", "/admin/api/location/add", addLocation},
        {"GET", "/admin/api/statuses", listStatuses},
        {"POST", "/admin/api/status/add", addStatus},
        {"POST", "/admin/api/status/edit", editStatus},
        {"GET", "/admin/api/chat", chat},
        {"POST", "/admin/api/chat", setChat},
        {"GET", "/admin/api/release", release},
        {"POST", "/admin/api/release", setRelease},
        {"GET", "/admin/api/outbox", outbox},
        {"GET", "/admin/api/anomalies", anomalies},
        {"GET", "/admin/api/history", history},
    };
    return routes;
}

Reply Run(Database& db, const Route& route, const Caller& caller, const Fields& fields) {
    try {
        return route.handler(db, caller.organizationSys, caller.userSys, fields);
    } catch (const BadInput& e) {
        return error(400, e.reason());
    }
}

Reply ok(const QJsonValue& value) {
    return {200,
            value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject())};
}

Reply error(int status, const QString& text) {
    return {status, QJsonDocument(QJsonObject{{QStringLiteral("error"), text}})};
}

qint64 keyField(const Fields& fields, const char* name) {
    bool isKey = false;
    const qint64 key = fields.value(QLatin1String(name)).trimmed().toLongLong(&isKey);
    if (!isKey || key <= 0)
        throw BadInput(QStringLiteral("%1 takes a key, a whole number").arg(QLatin1String(name)));
    return key;
}

MailSetup mailSetup() {
    const ServerSettings& settings = ServerSettings::Current();
    return {settings.publicUrl, settings.mailFrom};
}

} // namespace AdminApi
