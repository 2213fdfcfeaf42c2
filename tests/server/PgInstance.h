#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A free TCP port on the loopback address.
int FreeLoopbackPort();

// A private PostgreSQL for one test: its own cluster in a temp folder, on a free port with its own
// socket folder, removed at the end. Needs the server binaries and, when running as root, the
// "postgres" account to run them.
class PgInstance {
public:
    PgInstance();
    ~PgInstance();

    bool available() const { return m_ready; }
    QString reason() const { return m_reason; }
    QString url() const {
        return QStringLiteral("postgresql://postgres@127.0.0.1:%1/tavlo").arg(m_port);
    }
    bool restart(); // stops and starts the cluster, as an operator's restart would

private:
    bool runAsOwner(const char* program, const QStringList& arguments);

    QTemporaryDir m_dir;
    QString m_bin;
    QString m_data;
    int m_port = 0;
    bool m_started = false;
    bool m_ready = false;
    QString m_reason;
};
