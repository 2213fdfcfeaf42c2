#pragma once

#include <QStringList>

class Database;

// A demo organisation to try the program with: people, statuses, groups, locations, friends,
// notes, users with and without rights, a removed account, a disabled organisation and one
// with chat disabled. Safe to run twice: the second run changes nothing.
namespace DemoOrganisation {

// Creates the data unless it exists; returns the demo sign-ins, one line each.
QStringList Create(Database& db);

} // namespace DemoOrganisation
