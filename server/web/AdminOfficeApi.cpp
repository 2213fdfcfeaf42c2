// The administration's groups, locations, statuses and chat.
#include "AdminApiHandlers.h"
#include "setup/Groups.h"
#include "setup/InputRules.h"
#include "setup/Locations.h"
#include "setup/Organisations.h"
#include "setup/Statuses.h"

namespace AdminApi {
namespace {

QJsonObject added(qint64 key) {
    return {{QStringLiteral("added"), key}};
}

StatusInput statusFields(const Fields& f) {
    return {f.value(QStringLiteral("text")), f.value(QStringLiteral("colour")),
            f.value(QStringLiteral("order"))};
}

} // namespace

Reply listGroups(Database& db, qint64 organizationSys, qint64, const Fields&) {
    return ok(Groups::list(db, organizationSys));
}

Reply addGroup(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    return ok(added(Groups::add(db, organizationSys, fields.value(QStringLiteral("name")))));
}

Reply setGroupMember(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    Groups::setMember(db, organizationSys, keyField(fields, "group"), keyField(fields, "contact"),
                      InputRules::yesNo(fields.value(QStringLiteral("in")), QStringLiteral("in")));
    return ok(Groups::list(db, organizationSys));
}

Reply listLocations(Database& db, qint64 organizationSys, qint64, const Fields&) {
    return ok(Locations::list(db, organizationSys));
}

Reply addLocation(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    return ok(added(Locations::add(db, organizationSys, fields.value(QStringLiteral("name")))));
}

Reply listStatuses(Database& db, qint64 organizationSys, qint64, const Fields&) {
    return ok(Statuses::list(db, organizationSys));
}

Reply addStatus(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    return ok(added(Statuses::add(db, organizationSys, statusFields(fields))));
}

Reply editStatus(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    Statuses::edit(db, organizationSys, keyField(fields, "status"), statusFields(fields));
    return ok(Statuses::list(db, organizationSys));
}

Reply chat(Database& db, qint64 organizationSys, qint64, const Fields&) {
    return ok(QJsonObject{{QStringLiteral("on"), Organisations::chatOn(db, organizationSys)}});
}

Reply setChat(Database& db, qint64 organizationSys, qint64 userSys, const Fields& fields) {
    Organisations::setChat(
        db, organizationSys,
        InputRules::yesNo(fields.value(QStringLiteral("on")), QStringLiteral("on")));
    return chat(db, organizationSys, userSys, fields);
}

} // namespace AdminApi
