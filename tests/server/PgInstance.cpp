#include "PgInstance.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTcpServer>
#include <unistd.h>

namespace {

int freePort() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

QString findBinaries() {
    QDir versions(QStringLiteral("/usr/lib/postgresql"));
    QStringList found =
        versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::Reversed);
    for (const QString& version : found) {
        const QString bin = versions.filePath(version + QStringLiteral("/bin"));
        if (QFileInfo::exists(bin + QStringLiteral("/initdb")))
            return bin;
    }
    return QString();
}

} // namespace

PgInstance::PgInstance() : m_dir(QDir::tempPath() + QStringLiteral("/tavlo-pg-XXXXXX")) {
    m_bin = findBinaries();
    if (m_bin.isEmpty()) {
        m_reason = QStringLiteral("no PostgreSQL server binaries under /usr/lib/postgresql");
        return;
    }
    if (geteuid() == 0) {
        // The cluster must belong to an ordinary account.
        if (QProcess::execute(QStringLiteral("chown"),
                              {QStringLiteral("postgres:postgres"), m_dir.path()}) != 0) {
            m_reason = QStringLiteral("no postgres account to own the cluster");
            return;
        }
    }
    m_data = m_dir.filePath(QStringLiteral("data"));
    if (!runAsOwner(m_bin + QStringLiteral("/initdb"),
                    {QStringLiteral("-A"), QStringLiteral("trust"), QStringLiteral("-U"),
                     QStringLiteral("postgres"), QStringLiteral("-E"), QStringLiteral("UTF8"),
                     QStringLiteral("--locale=C"), QStringLiteral("-D"), m_data},
                    60000)) {
        m_reason = QStringLiteral("initdb failed");
        return;
    }
    m_port = freePort();
    const QString options = QStringLiteral("-p %1 -k %2 -c listen_addresses=127.0.0.1 -c fsync=off")
                                .arg(m_port)
                                .arg(m_dir.path());
    if (!runAsOwner(m_bin + QStringLiteral("/pg_ctl"),
                    {QStringLiteral("-D"), m_data, QStringLiteral("-o"), options,
                     QStringLiteral("-w"), QStringLiteral("-l"),
                     m_dir.filePath(QStringLiteral("log")), QStringLiteral("start")},
                    60000)) {
        m_reason = QStringLiteral("pg_ctl start failed");
        return;
    }
    m_started = true;
    if (!runAsOwner(m_bin + QStringLiteral("/createdb"),
                    {QStringLiteral("-h"), QStringLiteral("127.0.0.1"), QStringLiteral("-p"),
                     QString::number(m_port), QStringLiteral("-U"), QStringLiteral("postgres"),
                     QStringLiteral("tavlo")},
                    30000)) {
        m_reason = QStringLiteral("createdb failed");
        return;
    }
    m_ready = true;
}

PgInstance::~PgInstance() {
    if (m_started)
        runAsOwner(m_bin + QStringLiteral("/pg_ctl"),
                   {QStringLiteral("-D"), m_data, QStringLiteral("-m"), QStringLiteral("immediate"),
                    QStringLiteral("-w"), QStringLiteral("stop")},
                   30000);
}

bool PgInstance::restart() {
    return runAsOwner(m_bin + QStringLiteral("/pg_ctl"),
                      {QStringLiteral("-D"), m_data, QStringLiteral("-m"), QStringLiteral("fast"),
                       QStringLiteral("-w"), QStringLiteral("-l"),
                       m_dir.filePath(QStringLiteral("log")), QStringLiteral("restart")},
                      60000);
}

QString PgInstance::url() const {
    return QStringLiteral("postgresql://postgres@127.0.0.1:%1/tavlo").arg(m_port);
}

bool PgInstance::runAsOwner(const QString& program, const QStringList& arguments, int timeoutMs) {
    QProcess process;
    process.setWorkingDirectory(m_dir.path());
    if (geteuid() == 0)
        process.start(QStringLiteral("runuser"),
                      QStringList{QStringLiteral("-u"), QStringLiteral("postgres"),
                                  QStringLiteral("--"), program} +
                          arguments);
    else
        process.start(program, arguments);
    if (!process.waitForFinished(timeoutMs))
        return false;
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}
