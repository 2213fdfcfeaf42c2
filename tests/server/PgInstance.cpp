#include "PgInstance.h"

#include <QDir>
#include <QFileInfo>
#include <QTcpServer>
#include <unistd.h>

int FreeLoopbackPort() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

namespace {

QStringList words(const QString& text) {
    return text.split(QLatin1Char(' '));
}

} // namespace

PgInstance::PgInstance() : m_dir(QDir::tempPath() + QStringLiteral("/tavlo-pg-XXXXXX")) {
    QDir versions(QStringLiteral("/usr/lib/postgresql"));
    for (const QString& version :
         versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::Reversed))
        if (m_bin.isEmpty() &&
            QFileInfo::exists(versions.filePath(version + QStringLiteral("/bin/initdb"))))
            m_bin = versions.filePath(version + QStringLiteral("/bin/"));
    m_data = m_dir.filePath(QStringLiteral("data"));
    m_port = FreeLoopbackPort();
    const QString options = QStringLiteral("-p %1 -k %2 -c listen_addresses=127.0.0.1 -c fsync=off")
                                .arg(m_port)
                                .arg(m_dir.path());
    // The cluster must belong to an ordinary account.
    if (m_bin.isEmpty())
        m_reason = QStringLiteral("no PostgreSQL server binaries under /usr/lib/postgresql");
    else if (geteuid() == 0 &&
             QProcess::execute(QStringLiteral("chown"),
                               {QStringLiteral("postgres:postgres"), m_dir.path()}) != 0)
        m_reason = QStringLiteral("no postgres account to own the cluster");
    else if (!runAsOwner("initdb", words("-A trust -U postgres -E UTF8 --locale=C -D") << m_data))
        m_reason = QStringLiteral("initdb failed");
    else if (!(m_started = runAsOwner("pg_ctl", words("-w -l log -o")
                                                    << options << "-D" << m_data << "start")))
        m_reason = QStringLiteral("pg_ctl start failed");
    else if (!runAsOwner("createdb", words("-h 127.0.0.1 -U postgres -p")
                                         << QString::number(m_port) << "tavlo"))
        m_reason = QStringLiteral("createdb failed");
    else
        m_ready = true;
}

PgInstance::~PgInstance() {
    if (m_started)
        runAsOwner("pg_ctl", words("-m immediate -w stop -D") << m_data);
}

bool PgInstance::restart() {
    return runAsOwner("pg_ctl", words("-m fast -w -l log restart -D") << m_data);
}

bool PgInstance::runAsOwner(const char* program, const QStringList& arguments) {
    QProcess process;
    process.setWorkingDirectory(m_dir.path());
    const QStringList command = QStringList{m_bin + QLatin1String(program)} + arguments;
    if (geteuid() == 0)
        process.start(QStringLiteral("runuser"), words("-u postgres --") + command);
    else
        process.start(command.first(), command.mid(1));
    return process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}
