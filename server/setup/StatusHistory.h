#pragma once

#include <QJsonArray>
#include <QList>
#include <QString>

class Database;

// One status change as the history shows it.
struct HistoryEntry {
    QString when;  // yyyy-MM-ddTHH:mm:ss
    QString by;    // the user who made it, "First Last (user)"
    QString whose; // the person whose status it was, "First Last"
    QString from;  // status text, with the comment after " - " when there was one
    QString to;
    QString via; // client or web
};

// Who changed whose status, when, from what to what: the newest last.
namespace StatusHistory {

// The changes of the last `days` days; of one organisation, or of all when it is -1.
QList<HistoryEntry> read(Database& db, int days, qint64 organizationSys = -1);
// One tab-separated line an entry.
QString line(const HistoryEntry& entry);
QJsonArray json(const QList<HistoryEntry>& entries);

} // namespace StatusHistory
