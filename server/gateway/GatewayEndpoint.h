#pragma once

#include "AddressQuota.h"
#include "AnswerCache.h"
#include <QByteArray>
#include <QString>

class Database;
struct Caller;
namespace wire {
struct Statement;
}

// What POST /XMLDemo.asp does with a body, apart from HTTP: decode the one form field, parse
// it by the statement grammar, refuse anything the catalogue doesn't take, run the rest; a
// handler's Refusal answers 403.
class GatewayEndpoint {
public:
    struct Reply {
        int status = 200;
        QByteArray contentType;
        QByteArray body;
        QByteArray setCookie; // a Set-Cookie value when the session starts or ends
    };

    explicit GatewayEndpoint(Database& db, std::size_t cacheBytes = 64u << 20);
    std::size_t CachedBytes() const { return m_cache.Bytes(); }
    // cookieHeader: the request's Cookie header, which may carry the session.
    Reply Handle(const QByteArray& formBody, const QString& peer,
                 const QString& cookieHeader = QString());
    bool Healthy();
    // One line on the error output for a request that was turned away.
    static void LogRefusal(const QString& peer, const QString& reason);

private:
    // A statement turned away before it runs (400), or by its handler (403).
    Reply refuse(const QString& peer, const QString& reason, int status = 400);
    Reply run(const wire::Statement& statement, const QString& sql, Caller& caller);
    bool withinQuota(const wire::Statement& statement, const Caller& caller);
    Database& m_db;
    AnswerCache m_cache;
    AddressQuota m_anonymousWrites{20}; // a minute, per address
    AddressQuota m_anomalies{30};
};
