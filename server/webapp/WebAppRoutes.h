#pragma once

#include "WebRoute.h"

class Database;

// The web pages' routes: their files, and the JSON routes under /api/ and /admin/api/ that
// the pages call (JSON in and out; the session cookie names the caller).
namespace WebApp {

WebRoutes PageRoutes(Database& db);    // /board, /static/<file>
WebRoutes SessionRoutes(Database& db); // sign-in, sign-out, who is signed in
WebRoutes BoardRoutes(Database& db);   // the board, status changes, a person's history
WebRoutes WallRoutes(Database& db);    // the wall's board and its display tokens
WebRoutes AdminRoutes(Database& db);   // the administration's routes under /admin/api/

WebRoutes All(Database& db);

} // namespace WebApp
