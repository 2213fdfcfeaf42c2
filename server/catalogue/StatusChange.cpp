#include "StatusChange.h"

#include "Board.h"
#include "store/Database.h"
#include <QSqlQuery>

namespace StatusChange {

void Apply(Database& db, const Change& change) {
    const QString now = Board::now();
    db.write([&] {
        QSqlQuery before =
            db.exec(QStringLiteral("SELECT statussys, comment FROM contact WHERE contactsys = ?"),
                    {change.contactSys});
        if (!before.next())
            return; // nobody by that key: nothing changes
        const QVariant fromStatus = before.value(0);
        const QVariant fromComment = before.value(1);
        before.finish();
        db.exec(QStringLiteral("UPDATE contact SET statussys = ?, returnat = ?, comment = ?, "
                               "statussetby = ?, statussetat = ? WHERE contactsys = ?"),
                {change.statusSys,
                 change.returnAt.isEmpty() ? QVariant() : QVariant(change.returnAt), change.comment,
                 change.byUserSys, now, change.contactSys});
        db.exec(QStringLiteral("INSERT INTO statushistory (historysys, contactsys, changedby, "
                               "changedat, fromstatus, tostatus, fromcomment, tocomment, via) "
                               "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                {db.nextKey(QStringLiteral("statushistory"), QStringLiteral("historysys")),
                 change.contactSys, change.byUserSys, now, fromStatus, change.statusSys,
                 fromComment, change.comment, change.via});
    });
}

} // namespace StatusChange
