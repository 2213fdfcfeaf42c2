// The organisation's own lists: statuses, colours, groups, locations, and the search of
// organisations.
#include "Catalogue.h"
#include "RowsetFromQuery.h"
#include "store/Database.h"

namespace {

using S = ArgShape;

Answer query(Database& db, const QString& sql, const QVariantList& values) {
    QSqlQuery q = db.exec(sql, values);
    return RowsetFromQuery(q);
}

// Shared statuses (no organisation) and the organisation's own, in the organisation's order.
Answer availableStatuses(Database& db, const Args& a) {
    return query(db,
                 QStringLiteral("SELECT s.statussys AS \"StatusSys\", s.statustext AS \"Status\", "
                                "s.colorsys AS \"ColorSys\", k.colorcode AS \"ColorCode\", "
                                "s.picturelocation AS \"StatusPictureLocation\" FROM status s "
                                "LEFT JOIN color k ON k.colorsys = s.colorsys WHERE "
                                "s.organizationsys IS NULL OR s.organizationsys = ? "
                                "ORDER BY s.sortorder, s.statussys"),
                 {a.value(0)});
}

Answer availableColors(Database& db, const Args& a) {
    return query(db,
                 QStringLiteral("SELECT s.statussys AS \"StatusSys\", k.colorcode AS \"ColorCode\" "
                                "FROM status s LEFT JOIN color k ON k.colorsys = s.colorsys WHERE "
                                "s.organizationsys IS NULL OR s.organizationsys = ? "
                                "ORDER BY s.sortorder, s.statussys"),
                 {a.value(0)});
}

Answer organizationGroups(Database& db, const Args& a) {
    return query(db,
                 QStringLiteral("SELECT groupsys AS \"GroupSys\", organizationsys AS "
                                "\"OrganizationSys\", parentsys AS \"ParentSys\", childsys AS "
                                "\"ChildSys\", name AS \"Name\", description AS \"Description\" "
                                "FROM grp WHERE organizationsys = ? ORDER BY name, groupsys"),
                 {a.value(0)});
}

Answer organizationLocations(Database& db, const Args& a) {
    return query(db,
                 QStringLiteral("SELECT locationname AS \"LocationName\", organizationlocationsys "
                                "AS \"OrganizationLocationSys\" FROM location WHERE "
                                "organizationsys = ? ORDER BY locationname"),
                 {a.value(0)});
}

Answer searchCompany(Database& db, const Args& a) {
    return query(
        db,
        QStringLiteral("SELECT name AS \"Name\", description AS \"Description\", "
                       "organizationsys AS \"OrganizationSys\" FROM organization WHERE "
                       "disabled = 0 AND LOWER(name) LIKE LOWER(?) AND organizationsys = ? "
                       "ORDER BY name"),
        {a.isNull(0) ? QStringLiteral("%") : a.text(0), a.caller().organizationSys});
}

} // namespace

void registerDirectoryProcedures() {
    auto& c = Catalogue::instance();
    using R = Role;
    c.add(QStringLiteral("tl_GetAvailableStatuses"), {{S::Int, S::IntOrNull, S::IntOrNull}},
          availableStatuses, {false, {R::OwnOrganization, R::SelfUser, R::SelfContact}});
    c.add(QStringLiteral("tl_GetAvailableColors"), {{S::Int, S::IntOrNull}}, availableColors,
          {false, {R::OwnOrganization, R::SelfUser}});
    c.add(QStringLiteral("tl_GetOrganizationGroups"), {{S::Int}}, organizationGroups,
          {false, {R::OwnOrganization}});
    c.add(QStringLiteral("tl_GetOrganizationLocations"), {{S::Int}}, organizationLocations,
          {false, {R::OwnOrganization}});
    c.add(QStringLiteral("tl_SearchCompany"), {{S::TextOrNull}}, searchCompany);
}
