#pragma once

#include <QString>

class Database;

// The organisations of the directory. Each change is one transaction; bad input throws
// BadInput and changes nothing.
namespace Organisations {

// Adds an organisation, named uniquely (any case), and makes the shared statuses In,
// Unavailable and Out when the store has none yet; answers its key.
qint64 add(Database& db, const QString& name);
// The organisation a name (any case) or key names; BadInput when there is none. Reads only,
// inside a write or outside.
qint64 find(Database& db, const QString& nameOrKey);
// Whether the organisation's people may chat.
void setChat(Database& db, qint64 organizationSys, bool on);
bool chatOn(Database& db, qint64 organizationSys);

} // namespace Organisations
