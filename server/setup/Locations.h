#pragma once

#include <QJsonArray>
#include <QString>

class Database;

// The places an organisation's people work at.
namespace Locations {

// Adds a location named uniquely in the organisation (any case); answers its key.
qint64 add(Database& db, qint64 organizationSys, const QString& name);
// The organisation's location of that name (any case); BadInput when there is none.
qint64 find(Database& db, qint64 organizationSys, const QString& name);
// The locations, by name: key and name.
QJsonArray list(Database& db, qint64 organizationSys);

} // namespace Locations
