#include "SingleInstance.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>

namespace {

constexpr int kWaitMs = 3000;
constexpr qint64 kLongestRequest = 1024;
const QByteArray kRaiseVerb = QByteArrayLiteral("raise");

QString userName() {
    QString name = qEnvironmentVariable("USER");
    if (name.isEmpty())
        name = qEnvironmentVariable("USERNAME");
    if (name.isEmpty())
        name = QDir::home().dirName();
    return name;
}

// The user's own runtime folder when the session has one, else the temporary folder, where
// the key carries the user's name.
QString runtimeFolder() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && QFileInfo(runtime).isDir())
        return runtime;
    return QDir::tempPath();
}

} // namespace

SingleInstance::SingleInstance(QObject* parent) : SingleInstance(DefaultKey(), parent) {}

SingleInstance::SingleInstance(const QString& key, QObject* parent) : QObject(parent), m_key(key) {}

SingleInstance::~SingleInstance() {
    if (m_server)
        m_server->close();
    if (m_lock)
        m_lock->unlock();
}

QString SingleInstance::DefaultKey() {
    const QString executable =
        QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
    const QByteArray digest =
        QCryptographicHash::hash((userName() + QLatin1Char('|') + executable).toUtf8(),
                                 QCryptographicHash::Sha1)
            .toHex()
            .left(16);
    return QStringLiteral("tavlo-") + QString::fromLatin1(digest);
}

QString SingleInstance::LockFilePath() const {
    return runtimeFolder() + QLatin1Char('/') + m_key + QStringLiteral(".lock");
}

QString SingleInstance::ServerName() const {
#ifdef Q_OS_WIN
    return m_key; // a named pipe, which is per session already
#else
    return runtimeFolder() + QLatin1Char('/') + m_key + QStringLiteral(".sock");
#endif
}

bool SingleInstance::Claim() {
    if (m_lock)
        return true;
    auto lock = std::make_unique<QLockFile>(LockFilePath());
    lock->setStaleLockTime(0); // stale only when its holder is gone, however long it ran
    if (!lock->tryLock(0))
        return false;
    m_lock = std::move(lock);

    // A socket left by an instance that died is in the way of listening.
    QLocalServer::removeServer(ServerName());
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server, &QLocalServer::newConnection, this, &SingleInstance::acceptConnections);
    if (!m_server->listen(ServerName()))
        qWarning("SingleInstance: cannot listen on %s: %s", qPrintable(ServerName()),
                 qPrintable(m_server->errorString()));
    return true;
}

bool SingleInstance::AskFirstToRaise(const QString& windowTitle) {
    QLocalSocket socket;
    socket.connectToServer(ServerName());
    if (!socket.waitForConnected(kWaitMs))
        return false;
    QByteArray request = kRaiseVerb + ' ' + windowTitle.toUtf8().left(kLongestRequest - 16);
    request.replace('\n', ' ');
    socket.write(request + '\n');
    const bool sent = socket.waitForBytesWritten(kWaitMs);
    socket.disconnectFromServer();
    if (socket.state() != QLocalSocket::UnconnectedState)
        socket.waitForDisconnected(kWaitMs);
    return sent;
}

void SingleInstance::acceptConnections() {
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readRequest(socket); });
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        readRequest(socket); // the request may have arrived with the connection
    }
}

// One line, "raise <title>". Anything else, or a line that never ends, closes the connection.
void SingleInstance::readRequest(QLocalSocket* socket) {
    if (!socket->canReadLine()) {
        if (socket->bytesAvailable() > kLongestRequest ||
            socket->state() == QLocalSocket::UnconnectedState) {
            socket->abort();
            socket->deleteLater();
        }
        return;
    }
    const QByteArray line = socket->readLine(kLongestRequest).trimmed();
    socket->disconnectFromServer();
    if (socket->state() == QLocalSocket::UnconnectedState)
        socket->deleteLater();
    if (line == kRaiseVerb || line.startsWith(kRaiseVerb + ' '))
        emit RaiseRequested(QString::fromUtf8(line.mid(kRaiseVerb.size()).trimmed()));
}
