#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A private chat server for one test: Prosody in the foreground, its configuration, data and
// log in a fresh temp folder, c2s on 127.0.0.1 and a free port, one virtual host "localhost"
// that lets clients register accounts in band, sign in without TLS and with plain passwords.
// Messages to users who are not online bounce with an error (no offline store). Needs the
// prosody package.
//
//   ProsodyServer chat;
//   QVERIFY2(chat.started(), qPrintable(chat.failure()));
//   socket.Connect(chat.host(), chat.port(), ...);
class ProsodyServer {
public:
    ProsodyServer(); // starts it and waits (up to 15 s) until the port accepts connections
    ~ProsodyServer();
    ProsodyServer(const ProsodyServer&) = delete;
    ProsodyServer& operator=(const ProsodyServer&) = delete;

    bool started() const { return m_started; }
    QString failure() const; // why it did not start, with prosody's log
    quint16 port() const { return m_port; }
    QString host() const { return QStringLiteral("localhost"); }
    QString chatServerSetting() const; // "localhost:<port>"

    // Creates an account directly in the server's store.
    bool registerUser(const QString& user, const QString& password);
    void stop(); // ends the server; its port refuses connections from then on

private:
    QString configPath() const;
    bool writeConfig();
    bool waitForPort(int timeoutMs);
    QString log() const;

    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
    bool m_started = false;
    QString m_reason;
};
