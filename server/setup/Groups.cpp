#include "Groups.h"

#include "BadInput.h"
#include "InputRules.h"
#include "store/Database.h"
#include <QJsonObject>
#include <QMap>

namespace Groups {
namespace {

bool exists(Database& db, const QString& sql, const QVariantList& values) {
    QSqlQuery q = db.exec(sql, values);
    return q.next();
}

} // namespace

qint64 add(Database& db, qint64 organizationSys, const QString& name) {
    const QString clean = InputRules::name(name, QStringLiteral("the group's name"));
    return db.write([&] {
        if (exists(db,
                   QStringLiteral("SELECT 1 FROM grp WHERE organizationsys = ? AND "
                                  "LOWER(name) = LOWER(?)"),
                   {organizationSys, clean}))
            throw BadInput(QStringLiteral("there is a group '%1' already").arg(clean));
        const qint64 key = db.nextKey(QStringLiteral("grp"), QStringLiteral("groupsys"));
        db.exec(QStringLiteral("INSERT INTO grp (groupsys, organizationsys, parentsys, childsys, "
                               "name) VALUES (?, ?, 0, 0, ?)"),
                {key, organizationSys, clean});
        return key;
    });
}

qint64 find(Database& db, qint64 organizationSys, const QString& name) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT groupsys FROM grp WHERE organizationsys = ? AND "
                                         "LOWER(name) = LOWER(?) ORDER BY groupsys"),
                          {organizationSys, name.trimmed()});
    if (!q.next())
        throw BadInput(QStringLiteral("there is no group '%1'").arg(name.trimmed()));
    return q.value(0).toLongLong();
}

void setMember(Database& db, qint64 organizationSys, qint64 groupSys, qint64 contactSys, bool in) {
    db.write([&] {
        if (!exists(db,
                    QStringLiteral("SELECT 1 FROM grp WHERE groupsys = ? AND organizationsys = ?"),
                    {groupSys, organizationSys}))
            throw BadInput(QStringLiteral("there is no group %1").arg(groupSys));
        if (!exists(db,
                    QStringLiteral("SELECT 1 FROM contact WHERE contactsys = ? AND "
                                   "organizationsys = ? AND removed = 0"),
                    {contactSys, organizationSys}))
            throw BadInput(QStringLiteral("there is no person %1").arg(contactSys));
        if (in)
            db.exec(QStringLiteral("INSERT INTO contactgroup (groupsys, contactsys) VALUES (?, ?) "
                                   "ON CONFLICT DO NOTHING"),
                    {groupSys, contactSys});
        else
            db.exec(
                QStringLiteral("DELETE FROM contactgroup WHERE groupsys = ? AND contactsys = ?"),
                {groupSys, contactSys});
    });
}

QJsonArray list(Database& db, qint64 organizationSys) {
    QMap<qint64, QJsonArray> members;
    QSqlQuery m = db.exec(QStringLiteral("SELECT m.groupsys, m.contactsys FROM contactgroup m "
                                         "JOIN contact c ON c.contactsys = m.contactsys WHERE "
                                         "c.organizationsys = ? AND c.removed = 0 "
                                         "ORDER BY m.contactsys"),
                          {organizationSys});
    while (m.next())
        members[m.value(0).toLongLong()].append(m.value(1).toLongLong());
    m.finish();
    QSqlQuery q = db.exec(QStringLiteral("SELECT groupsys, name FROM grp WHERE organizationsys = ? "
                                         "ORDER BY name, groupsys"),
                          {organizationSys});
    QJsonArray out;
    while (q.next())
        out.append(
            QJsonObject{{QStringLiteral("group"), q.value(0).toLongLong()},
                        {QStringLiteral("name"), q.value(1).toString()},
                        {QStringLiteral("members"), members.value(q.value(0).toLongLong())}});
    return out;
}

} // namespace Groups
