#pragma once

#include "wire/ComError.h"
#include "wire/GatewayPost.h"
#include "wire/Recordset.h"
#include "wire/RowsetReader.h"
#include <QByteArray>
#include <QString>
#include <optional>

// Posts statements to a server the way the client does, and reads the answers.
class ServerClient {
public:
    explicit ServerClient(QString baseUrl) : m_baseUrl(std::move(baseUrl)) {}

    wire::GatewayReply post(const QString& sql) const {
        return wire::postStatement(
            {m_baseUrl, sql, QStringLiteral("11/18/2026 9:05:07 AM"), 10000});
    }
    // The recordset of a read; nullopt when the answer is no rowset.
    std::optional<wire::Recordset> read(const QString& sql) const {
        const auto reply = post(sql);
        try {
            return wire::Recordset(wire::RowsetReader::read(reply.body));
        } catch (const wire::ComError&) {
            return std::nullopt;
        }
    }
    // A write: accepted with an empty answer.
    bool write(const QString& sql) const {
        const auto reply = post(sql);
        return reply.transportOk && reply.httpStatus == 200 && reply.body.isEmpty();
    }
    // Turned away with an error page: 400 for a statement the catalogue doesn't take, 403 for
    // one the caller may not make.
    bool refused(const QString& sql, long status = 400) const {
        const auto reply = post(sql);
        return reply.transportOk && reply.httpStatus == status && reply.body.startsWith("<html>");
    }

private:
    QString m_baseUrl;
};
