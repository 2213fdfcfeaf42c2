#include "WebAppRoutes.h"

namespace WebApp {

WebRoutes All(Database& db) {
    WebRoutes all;
    for (auto part : {PageRoutes, SessionRoutes, BoardRoutes, WallRoutes})
        for (WebRoute& route : part(db))
            all.push_back(std::move(route));
    return all;
}

} // namespace WebApp
