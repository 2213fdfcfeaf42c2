#pragma once

#include <QByteArray>
#include <QString>

namespace wire {

class CookieJar;

// The outcome of one gateway POST.
struct GatewayReply {
    bool transportOk = false; // false: refused, unresolvable, reset, timed out
    QString transportError;   // the transport's own words when transportOk is false
    long httpStatus = 0;      // never decides anything; kept for tools and logs
    QByteArray body;          // the answer, as received (no decoding)
};

struct GatewayRequest {
    QString baseUrl;              // the configured address; "/XMLDemo.asp" is appended as it stands
    QString sql;                  // the statement text
    QString lastCached;           // value of the "lastCached" header
    long timeoutMs = 0;           // the whole answer; 0: no limit of our own
    long connectTimeoutMs = 0;    // taking the connection; 0: libcurl's own
    CookieJar* cookies = nullptr; // the cookies sent and kept; nullptr: the process's jar
};

// Posts one statement the way the client does: POST baseUrl + "/XMLDemo.asp", headers
// "lastCached" and "Content-Type: application/x-www-form-urlencoded", body
// "strSQL=" + form::URLEncode(sql) as single-byte text. Cookies the server sets (the session)
// are kept in the request's jar and sent with every later statement. Blocking (libcurl).
GatewayReply postStatement(const GatewayRequest& request);

// Fetches a URL with a plain GET (a picture of the web site, say). Blocking (libcurl).
GatewayReply getUrl(const QString& url, long timeoutMs);

// The exact body postStatement sends for a statement.
QByteArray gatewayBody(const QString& sql);

} // namespace wire
