#include "FtpServer.h"

#include "ChildServer.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace {

// Binds port 0 and prints the port it got, so no other process can take it in between.
// Exits once its parent is gone, so a test that crashes leaves no server behind.
const char* const kScript = R"(import logging, os, sys
from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler, ThrottledDTPHandler
from pyftpdlib.servers import FTPServer

root, user, password, limit, log = sys.argv[1:6]
logging.basicConfig(filename=log, level=logging.INFO)
authorizer = DummyAuthorizer()
authorizer.add_user(user, password, root, perm="elr")
authorizer.add_anonymous(root)
FTPHandler.authorizer = authorizer
FTPHandler.auth_failed_timeout = 0  # refuse a wrong password at once, not after 3 s
if int(limit) > 0:
    ThrottledDTPHandler.write_limit = int(limit)  # what the server sends: downloads
    FTPHandler.dtp_handler = ThrottledDTPHandler
server = FTPServer(("127.0.0.1", 0), FTPHandler)
parent = os.getppid()
server.ioloop.call_every(1, lambda: os.getppid() == parent or os._exit(0))
print(server.socket.getsockname()[1], flush=True)
server.serve_forever(timeout=1)
)";

// The python on PATH first; the system one too, where distribution packages live.
QStringList pythons() {
    QStringList found;
    for (const QString& candidate : {QStandardPaths::findExecutable(QStringLiteral("python3")),
                                     QStringLiteral("/usr/bin/python3")}) {
        if (!candidate.isEmpty() && QFile::exists(candidate) && !found.contains(candidate))
            found << candidate;
    }
    return found;
}

} // namespace

FtpServer::FtpServer(const QString& user, const QString& password, qint64 downloadLimit)
    : m_dir(QDir::tempPath() + QStringLiteral("/tavlo-ftp-XXXXXX")) {
    if (!m_dir.isValid() || !QDir(m_dir.path()).mkpath(QStringLiteral("root")) || !writeScript()) {
        m_reason = QStringLiteral("cannot prepare a temp folder");
        return;
    }
    const QStringList arguments{m_dir.filePath(QStringLiteral("server.py")),
                                root(),
                                user,
                                password,
                                QString::number(downloadLimit),
                                m_dir.filePath(QStringLiteral("server.log"))};
    for (const QString& python : pythons()) {
        if (run(python, arguments))
            return;
    }
    if (m_reason.isEmpty())
        m_reason = QStringLiteral("no python3 found");
}

FtpServer::~FtpServer() {
    stop();
}

QString FtpServer::failure() const {
    return m_reason + u'\n' + output();
}

QString FtpServer::site() const {
    return host() + u':' + QString::number(m_port);
}

QString FtpServer::root() const {
    return m_dir.filePath(QStringLiteral("root"));
}

void FtpServer::stop() {
    StopChild(m_process);
}

bool FtpServer::writeScript() {
    QFile file(m_dir.filePath(QStringLiteral("server.py")));
    return file.open(QIODevice::WriteOnly) && file.write(kScript) == qint64(qstrlen(kScript));
}

// Starts the server with one python and reads the port it prints. A python without
// pyftpdlib exits at once, and the next one gets its turn.
bool FtpServer::run(const QString& python, const QStringList& arguments) {
    m_process.setStandardErrorFile(m_dir.filePath(QStringLiteral("server.err")), QIODevice::Append);
    m_process.start(python, arguments);
    const QDeadlineTimer deadline(15000);
    QByteArray line;
    while (!line.endsWith('\n') && !deadline.hasExpired() &&
           m_process.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime()))))
        line += m_process.readAll();
    m_port = line.trimmed().toUShort();
    if (m_port != 0)
        return true;
    m_reason += python + QStringLiteral(" did not start an FTP server\n");
    stop();
    return false;
}

QString FtpServer::output() const {
    return LogTails(m_dir.path(), {"server.err", "server.log"});
}
