#pragma once

#include "AnswerCache.h"
#include <QByteArray>
#include <QString>

class Database;

// What POST /XMLDemo.asp does with a body, apart from HTTP: decode the one form field, parse
// it by the statement grammar, refuse anything the catalogue doesn't take, run the rest; a
// handler's Refusal answers 403.
class GatewayEndpoint {
public:
    struct Reply {
        int status = 200;
        QByteArray contentType;
        QByteArray body;
    };

    explicit GatewayEndpoint(Database& db);
    Reply Handle(const QByteArray& formBody, const QString& peer);
    bool Healthy();
    // One line on the error output for a request that was turned away.
    static void LogRefusal(const QString& peer, const QString& reason);

private:
    // A statement turned away before it runs (400), or by its handler (403).
    Reply refuse(const QString& peer, const QString& reason, int status = 400);
    Database& m_db;
    AnswerCache m_cache;
};
