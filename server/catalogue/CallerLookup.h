#pragma once

#include "Caller.h"

class Database;

// The caller behind a request: the person of a live session token, with what the rights
// checks need, or an anonymous caller when the token is missing, lapsed, or its account has
// been removed since.
Caller CallerOf(Database& db, const QString& sessionToken, const QString& peer);
