#include "RecordingGateway.h"

#include "wire/FormEncoding.h"
#include "wire/GatewayPost.h"

RecordingGateway::RecordingGateway(QString serverBaseUrl) : m_server(std::move(serverBaseUrl)) {
    m_front.setHandler([this](const TestHttpServer::Request& request) {
        if (request.method == "GET") { // pages and pictures of the web site pass through
            const auto page = wire::getUrl(m_server + QString::fromUtf8(request.target), 10000);
            return TestHttpServer::Answer{page.transportOk ? int(page.httpStatus) : 502,
                                          "image/png", page.body};
        }
        const QString sql = wire::form::field(request.body, "strSQL").value_or(QString());
        std::function<void(const QString&)> observer;
        std::function<bool(const QString&)> fails;
        {
            QMutexLocker hold(&m_lock);
            m_statements << sql;
            observer = m_observer;
            fails = m_fails;
        }
        if (observer)
            observer(sql);
        if (fails && fails(sql))
            return TestHttpServer::Answer{200, "text/html",
                                          "<html><body>Internal error</body></html>"};
        wire::GatewayRequest forward{m_server, sql,
                                     QString::fromLatin1(request.header("lastCached")), 10000};
        forward.cookies = &m_cookies; // the session of the client behind this gateway
        const auto reply = wire::postStatement(forward);
        return TestHttpServer::Answer{reply.transportOk ? int(reply.httpStatus) : 502, "text/xml",
                                      reply.body};
    });
}

QStringList RecordingGateway::statements() const {
    QMutexLocker hold(&m_lock);
    return m_statements;
}

void RecordingGateway::clear() {
    QMutexLocker hold(&m_lock);
    m_statements.clear();
}

void RecordingGateway::setFailing(std::function<bool(const QString&)> fails) {
    QMutexLocker hold(&m_lock);
    m_fails = std::move(fails);
}

void RecordingGateway::setObserver(std::function<void(const QString&)> observer) {
    QMutexLocker hold(&m_lock);
    m_observer = std::move(observer);
}
