#pragma once

#include <QByteArray>
#include <QString>
#include <utility>
#include <vector>

// One request as the routes see it, apart from the socket it came on.
struct HttpRequest {
    QByteArray method; // "GET", "POST", ...
    QString path;      // percent-decoded, without the query
    QByteArray query;  // as sent, after the '?'
    QByteArray body;
    QString peer; // the address the request came from (or the one a trusted proxy names)
    std::vector<std::pair<QByteArray, QByteArray>> headers; // names in lower case

    // The value of the first header of that name (lower case), or an empty array.
    QByteArray header(QByteArrayView name) const {
        for (const auto& [key, value] : headers)
            if (key == name)
                return value;
        return {};
    }
};
