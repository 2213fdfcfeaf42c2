#pragma once

#include <QString>
#include <QVariant>

class Database;

// One person's status set, by whoever sets it (the client's statement, the web board), with
// the change kept in the status history: who changed whose status, when, from what to what.
// Rights are the caller's business; this only records.
namespace StatusChange {

struct Change {
    qint64 contactSys = 0;
    qint64 statusSys = 0;
    QString returnAt; // stored moment ("yyyy-MM-ddTHH:mm:ss") or empty for none
    QVariant comment; // null for none
    qint64 byUserSys = 0;
    QString via; // "client" or "web"
};

// Sets the status and writes one history row, in one transaction.
void Apply(Database& db, const Change& change);

// History rows are kept this long.
inline constexpr int kKeepDays = 400;

} // namespace StatusChange
