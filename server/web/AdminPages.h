#pragma once

#include "WebBoard.h"
#include <QHash>
#include <QString>

class Database;

// The web administration (/Administrator.asp), for a signed-in administrator of an
// organisation: the organisation's people, and one person's record (p: contact number).
namespace AdminPages {

inline constexpr qint64 kAdministratorRight = 10000000;

// Whether the user holds the administrator right (the web's administration, its JSON routes).
bool IsAdministrator(Database& db, qint64 userSys);

// userSys is the session's user, -1 for a visitor who hasn't signed in.
WebBoard::Page Administrator(Database& db, qint64 userSys, const QHash<QString, QString>& fields);

} // namespace AdminPages
