#include "data/GatewayCall.h"

#include "base/Clock.h"
#include "base/Regional.h"
#include "base/TLError.h"
#include "shell/TLMain.h"
#include "wire/GatewayPost.h"

GatewayCall::GatewayCall(const QString& sql) : m_sql(sql) {}

void GatewayCall::Send() {
    wire::GatewayRequest request;
    request.baseUrl = TLMain().Settings().WebAddress();
    request.sql = m_sql;
    m_body = wire::gatewayBody(m_sql);
    request.lastCached = Regional::DateText(Clock::Now());
    request.connectTimeoutMs = ConnectTimeoutMs;
    request.timeoutMs = AnswerTimeoutMs;
    const wire::GatewayReply reply = wire::postStatement(request);
    if (!reply.transportOk)
        Raise(err::HostUnreachable, reply.transportError);
    m_answer = reply.body;
}

QString GatewayCall::ReportText(const QString& description) const {
    return description + QLatin1Char('\r') + QString::fromLatin1(m_body) + QLatin1Char('\r') +
           QString::fromUtf8(m_answer);
}
