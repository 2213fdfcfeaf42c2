#pragma once

#include "gateway/HttpReply.h"
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

// Answers of the web pages and their JSON routes. Every one is sent with headers that keep it
// out of frames and caches, stop type sniffing, send no referrer (a display's address holds
// its token) and let a page load scripts, styles, images and data from this server alone.
namespace WebReplies {

HttpReply& Secured(HttpReply& reply);
HttpReply Json(int status, const QJsonObject& body);
HttpReply JsonDocument(int status, const QJsonDocument& body); // an object or an array
// {"error": reason}
HttpReply Error(int status, const QString& reason);
HttpReply File(const QByteArray& contentType, const QByteArray& body);

} // namespace WebReplies
