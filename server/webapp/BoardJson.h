#pragma once

#include <QJsonArray>

class Database;

// The board as the web pages read it, from the same lists the client reads.
namespace BoardJson {

// The organisation's people as the user sees them: contact, name ("Last, First", a star
// behind it while on chat), ext, status, statusId, colour ("#RRGGBB"), returningDate,
// returningTime, returnAt (the moment for the status dialog), comment and whether the user has
// them as a friend.
QJsonArray People(Database& db, qint64 askingUser, qint64 organizationSys);
// The same for a wall: name, ext, status, colour and when they return, nothing else.
QJsonArray WallPeople(Database& db, qint64 organizationSys);
// The organisation's groups with their members' contact numbers: {id, name, members}.
QJsonArray Groups(Database& db, qint64 organizationSys);
// The statuses one may choose in the organisation: {id, text, colour}.
QJsonArray Statuses(Database& db, qint64 organizationSys);

} // namespace BoardJson
