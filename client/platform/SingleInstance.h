#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>
#include <memory>

class QLocalSocket;

// One running instance per user of the same executable. The first instance holds a lock file
// and listens on a local socket, both in the user's runtime folder ($XDG_RUNTIME_DIR, else the
// temporary folder); a later instance finds the lock held and can ask the first, through the
// socket, to raise its window. The first instance only emits RaiseRequested: which window to
// raise is for its owner to decide.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    // The key names the lock and the socket; by default it is made from the user and the
    // executable's path.
    explicit SingleInstance(QObject* parent = nullptr);
    explicit SingleInstance(const QString& key, QObject* parent = nullptr);
    ~SingleInstance() override;

    static QString DefaultKey();

    // Becomes the first instance if no other holds the lock. True when this one is (or already
    // was) the first.
    bool Claim();
    bool IsFirst() const { return m_lock != nullptr; }

    // From a later instance: asks the first one to raise its window of that title. True when the
    // request was delivered. Waits at most a few seconds; never hangs on a dead first instance.
    bool AskFirstToRaise(const QString& windowTitle);

    QString LockFilePath() const;
    QString ServerName() const;

signals:
    void RaiseRequested(const QString& windowTitle);

private:
    void acceptConnections();
    void readRequest(QLocalSocket* socket);

    QString m_key;
    std::unique_ptr<QLockFile> m_lock;
    QLocalServer* m_server = nullptr; // child of this object
};
