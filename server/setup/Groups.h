#pragma once

#include <QJsonArray>
#include <QString>

class Database;

// The groups of an organisation (teams the board can be narrowed to) and who is in them.
namespace Groups {

// Adds a group named uniquely in the organisation (any case); answers its key.
qint64 add(Database& db, qint64 organizationSys, const QString& name);
// The organisation's group of that name (any case); BadInput when there is none.
qint64 find(Database& db, qint64 organizationSys, const QString& name);
// Puts a person of the organisation into the group, or takes them out.
void setMember(Database& db, qint64 organizationSys, qint64 groupSys, qint64 contactSys, bool in);
// The groups, by name: key, name and the keys of their people.
QJsonArray list(Database& db, qint64 organizationSys);

} // namespace Groups
