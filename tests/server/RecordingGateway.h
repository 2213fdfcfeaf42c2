#pragma once

#include "TestHttpServer.h"
#include <QMutex>
#include <QString>
#include <QStringList>

// Stands between the client and a real server: passes every statement on unchanged and keeps
// each one, decoded, in the order it came, so a test can check what the client sent.
class RecordingGateway {
public:
    explicit RecordingGateway(QString serverBaseUrl);

    QString baseUrl() const { return m_front.baseUrl(); }
    QStringList statements() const;
    void clear();

private:
    TestHttpServer m_front;
    QString m_server;
    mutable QMutex m_lock;
    QStringList m_statements;
};
