#pragma once

#include "catalogue/Caller.h"
#include "gateway/HttpRequest.h"
#include <QJsonObject>
#include <QString>

// One JSON request as its handler sees it: the caller its session cookie names (anonymous
// without one) and, for a POST, the JSON object it carried.
struct ApiCall {
    const HttpRequest& http;
    Caller caller;
    bool administrator = false; // holds the administrator right
    QJsonObject body;

    // A field of the address's query, percent-decoded; empty when absent.
    QString query(const QString& name) const;
    // A whole number of the body (a JSON number or a text of digits), or -1.
    qint64 number(const QString& name) const;
    QString text(const QString& name) const;
};
