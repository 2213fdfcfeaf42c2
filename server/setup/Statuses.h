#pragma once

#include <QJsonArray>
#include <QString>

class Database;

// What a status reads as on the board: its text, colour (#RRGGBB) and place in the list.
struct StatusInput {
    QString text;
    QString colour;
    QString order;
};

// The statuses people choose from: the shared legend (In, Unavailable, Out, for every
// organisation) and each organisation's own.
namespace Statuses {

inline constexpr qint64 kIn = 3;
inline constexpr qint64 kUnavailable = 6;
inline constexpr qint64 kOut = 8;

// Inside a write: makes the legend statuses that are missing, with their colours.
void ensureLegend(Database& db);
// Adds a status of the organisation, its text unique among the ones it sees; answers its key.
qint64 add(Database& db, qint64 organizationSys, const StatusInput& input);
// Changes one of the organisation's own statuses (the legend stays as it is).
void edit(Database& db, qint64 organizationSys, qint64 statusSys, const StatusInput& input);
// Whether the status is one of the legend's (In, Unavailable, Out), which every board explains.
bool isLegend(qint64 statusSys);
// The statuses the organisation sees, in order: key, text, colour, order, shared, legend.
QJsonArray list(Database& db, qint64 organizationSys);

} // namespace Statuses
