#include "Organisations.h"

#include "BadInput.h"
#include "InputRules.h"
#include "Statuses.h"
#include "store/Database.h"

namespace Organisations {

qint64 add(Database& db, const QString& name) {
    const QString clean = InputRules::name(name, QStringLiteral("the organisation's name"), 100);
    return db.write([&] {
        QSqlQuery taken = db.exec(
            QStringLiteral("SELECT 1 FROM organization WHERE LOWER(name) = LOWER(?)"), {clean});
        if (taken.next())
            throw BadInput(
                QStringLiteral("there is an organisation named '%1' already").arg(clean));
        taken.finish();
        Statuses::ensureLegend(db);
        const qint64 key =
            db.nextKey(QStringLiteral("organization"), QStringLiteral("organizationsys"));
        db.exec(QStringLiteral("INSERT INTO organization (organizationsys, name, disabled, "
                               "chatdisabled) VALUES (?, ?, 0, 0)"),
                {key, clean});
        return key;
    });
}

qint64 find(Database& db, const QString& nameOrKey) {
    const QString text = nameOrKey.trimmed();
    if (text.isEmpty())
        throw BadInput(QStringLiteral("no organisation given (--org NAME)"));
    bool isKey = false;
    const qint64 key = text.toLongLong(&isKey);
    QSqlQuery q = db.exec(QStringLiteral("SELECT organizationsys FROM organization WHERE "
                                         "LOWER(name) = LOWER(?) OR organizationsys = ? "
                                         "ORDER BY organizationsys"),
                          {text, isKey ? key : -1});
    if (!q.next())
        throw BadInput(QStringLiteral("there is no organisation '%1'").arg(text));
    return q.value(0).toLongLong();
}

void setChat(Database& db, qint64 organizationSys, bool on) {
    db.write([&] {
        db.exec(
            QStringLiteral("UPDATE organization SET chatdisabled = ? WHERE organizationsys = ?"),
            {on ? 0 : 1, organizationSys});
    });
}

bool chatOn(Database& db, qint64 organizationSys) {
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT chatdisabled FROM organization WHERE organizationsys = ?"),
                {organizationSys});
    return q.next() && q.value(0).toInt() == 0;
}

} // namespace Organisations
