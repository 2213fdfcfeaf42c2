#include "ProsodyServer.h"

#include "ChildServer.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <unistd.h>

namespace {

quint16 freePort() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

QString luaString(const QString& s) {
    return u'"' + QString(s).replace(u'\\', QStringLiteral("\\\\")).replace(u'"', "\\\"") + u'"';
}

} // namespace

ProsodyServer::ProsodyServer() : m_dir(QDir::tempPath() + QStringLiteral("/tavlo-prosody-XXXXXX")) {
    m_port = freePort();
    if (!m_dir.isValid() || !writeConfig()) {
        m_reason = QStringLiteral("cannot write the configuration in a temp folder");
        return;
    }
    m_process.setWorkingDirectory(m_dir.path());
    m_process.setStandardOutputFile(m_dir.filePath(QStringLiteral("prosody.out")));
    m_process.setStandardErrorFile(m_dir.filePath(QStringLiteral("prosody.out")));
    m_process.start(QStringLiteral("prosody"),
                    {QStringLiteral("-F"), QStringLiteral("--config"), configPath()});
    if (!m_process.waitForStarted(5000)) {
        m_reason = QStringLiteral("prosody did not start: ") + m_process.errorString();
        return;
    }
    // A start that fails (say, the port was taken) leaves prosody running without a listener,
    // so only an accepted connection counts.
    m_started = waitForPort(15000);
    if (!m_started)
        m_reason = QStringLiteral("prosody's port %1 never accepted a connection").arg(m_port);
}

ProsodyServer::~ProsodyServer() {
    stop();
}

QString ProsodyServer::failure() const {
    return m_reason + QStringLiteral("\n") + log();
}

QString ProsodyServer::chatServerSetting() const {
    return host() + u':' + QString::number(m_port);
}

bool ProsodyServer::registerUser(const QString& user, const QString& password) {
    QProcess ctl;
    ctl.start(QStringLiteral("prosodyctl"), {QStringLiteral("--config"), configPath(),
                                             QStringLiteral("register"), user, host(), password});
    return ctl.waitForFinished(15000) && ctl.exitStatus() == QProcess::NormalExit &&
           ctl.exitCode() == 0;
}

void ProsodyServer::stop() {
    StopChild(m_process);
    m_started = false;
}

QString ProsodyServer::configPath() const {
    return m_dir.filePath(QStringLiteral("prosody.cfg.lua"));
}

bool ProsodyServer::writeConfig() {
    const auto path = [this](const char* name) { return luaString(m_dir.filePath(name)); };
    QDir(m_dir.path()).mkpath(QStringLiteral("data"));
    QDir(m_dir.path()).mkpath(QStringLiteral("certs"));
    QString cfg;
    if (geteuid() == 0)
        cfg += QStringLiteral("run_as_root = true\n");
    cfg += QStringLiteral("pidfile = %1\n").arg(path("prosody.pid"));
    cfg += QStringLiteral("data_path = %1\n").arg(path("data"));
    cfg += QStringLiteral("certificates = %1\n").arg(path("certs"));
    cfg += QStringLiteral("log = { debug = %1 }\n").arg(path("prosody.log"));
    cfg += QStringLiteral("plugin_paths = {}\n"
                          "modules_enabled = { \"roster\"; \"saslauth\"; \"register\"; "
                          "\"disco\"; \"ping\" }\n"
                          "modules_disabled = { \"s2s\"; \"offline\" }\n"
                          "c2s_interfaces = { \"127.0.0.1\" }\n"
                          "c2s_ports = { %1 }\n"
                          "c2s_direct_tls_ports = {}\n"
                          "legacy_ssl_ports = {}\n"
                          "s2s_ports = {}\n"
                          "authentication = \"internal_hashed\"\n"
                          "allow_registration = true\n"
                          "c2s_require_encryption = false\n"
                          "allow_unencrypted_plain_auth = true\n"
                          "VirtualHost \"localhost\"\n")
               .arg(m_port);
    QFile file(configPath());
    return file.open(QIODevice::WriteOnly) && file.write(cfg.toUtf8()) == cfg.toUtf8().size();
}

bool ProsodyServer::waitForPort(int timeoutMs) {
    const QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, m_port);
        if (probe.waitForConnected(500))
            return true;
        if (m_process.waitForFinished(100)) // it gave up
            return false;
    }
    return false;
}

QString ProsodyServer::log() const {
    return LogTails(m_dir.path(), {"prosody.out", "prosody.log"});
}
