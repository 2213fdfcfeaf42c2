#pragma once

#include "gateway/HttpReply.h"
#include "gateway/HttpRequest.h"
#include <QByteArray>
#include <QString>
#include <functional>
#include <vector>

// One route of the web pages: the methods it answers ("GET", "GET POST"), its exact path and
// what answers it. The gateway adds them beside its own routes.
struct WebRoute {
    QByteArray methods;
    QString path;
    std::function<HttpReply(const HttpRequest&)> handle;
};

using WebRoutes = std::vector<WebRoute>;
