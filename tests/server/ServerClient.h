#pragma once

#include "wire/ComError.h"
#include "wire/CookieJar.h"
#include "wire/GatewayPost.h"
#include "wire/Recordset.h"
#include "wire/RowsetReader.h"
#include <QByteArray>
#include <QString>
#include <memory>
#include <optional>

// Posts statements to a server the way the client does, and reads the answers. Each client
// keeps its own cookies, so it is one visitor: anonymous until signIn, then that person.
class ServerClient {
public:
    explicit ServerClient(QString baseUrl)
        : m_baseUrl(std::move(baseUrl)), m_cookies(std::make_unique<wire::CookieJar>()) {}
    // A client signed in as the user (every demo password is "demo").
    ServerClient(QString baseUrl, const QString& user, const QString& password = "demo")
        : ServerClient(std::move(baseUrl)) {
        signIn(user, password);
    }

    wire::GatewayReply post(const QString& sql) const {
        wire::GatewayRequest request{m_baseUrl, sql, QStringLiteral("11/18/2026 9:05:07 AM"),
                                     10000};
        request.cookies = m_cookies.get();
        return wire::postStatement(request);
    }
    // Signs in through the gateway; true when the server answered a row and a session.
    bool signIn(const QString& user, const QString& password = "demo") const {
        const auto rs = read(QStringLiteral("EXEC LoginCheck '%1','%2'").arg(user, password));
        return rs && rs->RecordCount() == 1;
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
    std::unique_ptr<wire::CookieJar> m_cookies;
};
