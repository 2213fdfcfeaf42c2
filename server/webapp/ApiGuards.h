#pragma once

#include "ApiCall.h"
#include "WebRoute.h"
#include <functional>

class Database;

// JSON routes (under /api/ and /admin/api/) with their checks made before the handler runs: a POST must say
// Content-Type: application/json and carry a JSON object (415 and 400 otherwise), so that no
// other site's form can post here; the caller comes from the session cookie.
namespace ApiGuards {

using Handler = std::function<HttpReply(const ApiCall&)>;

// Open to anyone: the handler decides (sign-in, the wall's display token).
WebRoute Open(Database& db, QByteArray methods, QString path, Handler handler);
// A signed-in caller only: 401 without a live session.
WebRoute SignedIn(Database& db, QByteArray methods, QString path, Handler handler);
// An administrator only: 401 without a session, 403 without the administrator right.
WebRoute Administrator(Database& db, QByteArray methods, QString path, Handler handler);

} // namespace ApiGuards
