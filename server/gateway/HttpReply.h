#pragma once

#include <QByteArray>
#include <utility>
#include <vector>

// One answer as a route makes it; the front adds the length and the connection's fate.
struct HttpReply {
    int status = 200;
    QByteArray contentType;
    QByteArray body;
    std::vector<std::pair<QByteArray, QByteArray>> headers;

    HttpReply& with(QByteArray name, QByteArray value) {
        headers.emplace_back(std::move(name), std::move(value));
        return *this;
    }
};
