#include "Locations.h"

#include "BadInput.h"
#include "InputRules.h"
#include "store/Database.h"
#include <QJsonObject>

namespace Locations {

qint64 add(Database& db, qint64 organizationSys, const QString& name) {
    const QString clean = InputRules::name(name, QStringLiteral("the location's name"));
    return db.write([&] {
        QSqlQuery taken = db.exec(QStringLiteral("SELECT 1 FROM location WHERE organizationsys = ? "
                                                 "AND LOWER(locationname) = LOWER(?)"),
                                  {organizationSys, clean});
        if (taken.next())
            throw BadInput(QStringLiteral("there is a location '%1' already").arg(clean));
        taken.finish();
        const qint64 key =
            db.nextKey(QStringLiteral("location"), QStringLiteral("organizationlocationsys"));
        db.exec(QStringLiteral("INSERT INTO location (organizationlocationsys, organizationsys, "
                               "locationname) VALUES (?, ?, ?)"),
                {key, organizationSys, clean});
        return key;
    });
}

qint64 find(Database& db, qint64 organizationSys, const QString& name) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT organizationlocationsys FROM location WHERE "
                                         "organizationsys = ? AND LOWER(locationname) = LOWER(?) "
                                         "ORDER BY organizationlocationsys"),
                          {organizationSys, name.trimmed()});
    if (!q.next())
        throw BadInput(QStringLiteral("there is no location '%1'").arg(name.trimmed()));
    return q.value(0).toLongLong();
}

QJsonArray list(Database& db, qint64 organizationSys) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT organizationlocationsys, locationname FROM "
                                         "location WHERE organizationsys = ? ORDER BY "
                                         "locationname, organizationlocationsys"),
                          {organizationSys});
    QJsonArray out;
    while (q.next())
        out.append(QJsonObject{{QStringLiteral("location"), q.value(0).toLongLong()},
                               {QStringLiteral("name"), q.value(1).toString()}});
    return out;
}

} // namespace Locations
