#pragma once

#include "Caller.h"

class Database;

// The caller behind a request: the person of a live session token, with what the rights
// checks need, or an anonymous caller when the token is missing, lapsed, or its account has
// been removed since. A caller is looked up at most every ten seconds per token (a poll sends
// several statements at once); a sign-out or password reset in this process drops every kept
// copy at once, one in another process is seen within those ten seconds.
Caller CallerOf(Database& db, const QString& sessionToken, const QString& peer);
