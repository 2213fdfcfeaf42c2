#pragma once

#include "TestHttpServer.h"
#include "wire/CookieJar.h"
#include <QMutex>
#include <QString>
#include <QStringList>
#include <functional>

// Stands between the client and a real server: passes every statement on unchanged and keeps
// each one, decoded, in the order it came, so a test can check what the client sent. It holds
// the server's session cookie for the one client behind it, as that client's own HTTP layer
// would.
class RecordingGateway {
public:
    explicit RecordingGateway(QString serverBaseUrl);

    QString baseUrl() const { return m_front.baseUrl(); }
    QStringList statements() const;
    // Called on the gateway's thread with each statement before it goes on, while the client
    // waits for its answer.
    void setObserver(std::function<void(const QString&)> observer);
    // Statements for which this says true get an HTML error page instead of the server's answer.
    void setFailing(std::function<bool(const QString&)> fails);
    void clear();

private:
    wire::CookieJar m_cookies; // before m_front, whose handler uses it
    TestHttpServer m_front;
    QString m_server;
    mutable QMutex m_lock;
    QStringList m_statements;
    std::function<void(const QString&)> m_observer;
    std::function<bool(const QString&)> m_fails;
};
