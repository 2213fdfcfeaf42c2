// The web pages' files, compiled in as resources under :/web/static: each is answered at
// /static/<name>, and the board's page also at /board (the wall mode is the same page).
#include "StaticFiles.h"
#include "WebAppRoutes.h"
#include "WebReplies.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

QByteArray contentTypeOf(const QString& name) {
    const QString suffix = QFileInfo(name).suffix();
    if (suffix == QStringLiteral("html"))
        return "text/html; charset=utf-8";
    if (suffix == QStringLiteral("css"))
        return "text/css; charset=utf-8";
    if (suffix == QStringLiteral("js"))
        return "text/javascript; charset=utf-8";
    if (suffix == QStringLiteral("png"))
        return "image/png";
    if (suffix == QStringLiteral("svg"))
        return "image/svg+xml";
    return "application/octet-stream";
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("a compiled-in web file can't be read: " + path.toStdString());
    return file.readAll();
}

WebRoute fileRoute(const QString& path, const QString& resource) {
    const QByteArray body = contentOf(resource);
    const QByteArray type = contentTypeOf(resource);
    return {"GET", path, [body, type](const HttpRequest&) { return WebReplies::File(type, body); }};
}

const QString kFolder = QStringLiteral(":/web/static/");

} // namespace

namespace StaticFiles {

HttpReply Reply(int status, const QString& name) {
    HttpReply reply = WebReplies::File(contentTypeOf(name), contentOf(kFolder + name));
    reply.status = status;
    return reply;
}

} // namespace StaticFiles

namespace WebApp {

WebRoutes PageRoutes(Database&) {
    WebRoutes routes;
    for (const QString& name : QDir(kFolder).entryList(QDir::Files))
        routes.push_back(fileRoute(QStringLiteral("/static/") + name, kFolder + name));
    routes.push_back(fileRoute(QStringLiteral("/board"), kFolder + QStringLiteral("board.html")));
    return routes;
}

} // namespace WebApp
