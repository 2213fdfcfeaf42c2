#include "StatusHistory.h"

#include "store/Database.h"
#include <QDateTime>
#include <QJsonObject>

namespace StatusHistory {
namespace {

QString withComment(const QVariant& status, const QVariant& comment) {
    const QString text = status.isNull() ? QStringLiteral("?") : status.toString();
    const QString note = comment.toString().trimmed();
    return note.isEmpty() ? text : text + QStringLiteral(" - ") + note;
}

QString person(const QVariant& first, const QVariant& last) {
    return (first.toString() + QLatin1Char(' ') + last.toString()).trimmed();
}

} // namespace

QList<HistoryEntry> read(Database& db, int days, qint64 organizationSys) {
    const QString since =
        QDateTime::currentDateTime().addDays(-days).toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    QSqlQuery q = db.exec(
        QStringLiteral("SELECT h.changedat, bc.firstname, bc.lastname, b.username, c.firstname, "
                       "c.lastname, fs.statustext, h.fromcomment, ts.statustext, h.tocomment, "
                       "h.via FROM statushistory h JOIN contact c ON c.contactsys = h.contactsys "
                       "LEFT JOIN users b ON b.usersys = h.changedby "
                       "LEFT JOIN contact bc ON bc.contactsys = b.contactsys "
                       "LEFT JOIN status fs ON fs.statussys = h.fromstatus "
                       "LEFT JOIN status ts ON ts.statussys = h.tostatus "
                       "WHERE h.changedat >= ? AND (? < 0 OR c.organizationsys = ?) "
                       "ORDER BY h.changedat, h.historysys"),
        {since, organizationSys, organizationSys});
    QList<HistoryEntry> out;
    while (q.next()) {
        const QString by = q.value(3).isNull()
                               ? QStringLiteral("?")
                               : QStringLiteral("%1 (%2)").arg(person(q.value(1), q.value(2)),
                                                               q.value(3).toString());
        out.append({q.value(0).toString(), by, person(q.value(4), q.value(5)),
                    withComment(q.value(6), q.value(7)), withComment(q.value(8), q.value(9)),
                    q.value(10).toString()});
    }
    return out;
}

QString line(const HistoryEntry& e) {
    return QStringList{e.when, e.by, e.whose, e.from, e.to, e.via}.join(QLatin1Char('\t'));
}

QJsonArray json(const QList<HistoryEntry>& entries) {
    QJsonArray out;
    for (const HistoryEntry& e : entries)
        out.append(QJsonObject{{QStringLiteral("when"), e.when},
                               {QStringLiteral("by"), e.by},
                               {QStringLiteral("whose"), e.whose},
                               {QStringLiteral("from"), e.from},
                               {QStringLiteral("to"), e.to},
                               {QStringLiteral("via"), e.via}});
    return out;
}

} // namespace StatusHistory
