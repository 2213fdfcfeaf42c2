#include "WebAppRoutes.h"

namespace WebApp {

WebRoutes All(Database& db) {
    WebRoutes all;
    for (auto routesOf : {PageRoutes, SessionRoutes, BoardRoutes, WallRoutes, AdminRoutes})
        for (WebRoute& route : routesOf(db))
            all.push_back(std::move(route));
    return all;
}

} // namespace WebApp
