#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A private FTP server for one test: pyftpdlib on 127.0.0.1 and a free port, serving root()
// (a folder in a fresh temp dir) read-only to one account and to anonymous users. Its log
// goes to a file beside it. A download limit (bytes a second, 0 for none) makes transfers
// slow enough to watch their progress or stop them half way. Needs python3-pyftpdlib.
//
//   FtpServer ftp("ann", "secret");
//   QVERIFY2(ftp.started(), qPrintable(ftp.failure()));
//   QFile(ftp.root() + "/update.bin")...;  session.Host = ftp.site();
class FtpServer {
public:
    // Starts it and waits (up to 15 s) until it listens.
    FtpServer(const QString& user, const QString& password, qint64 downloadLimit = 0);
    ~FtpServer();
    FtpServer(const FtpServer&) = delete;
    FtpServer& operator=(const FtpServer&) = delete;

    bool started() const { return m_port != 0; }
    QString failure() const; // why it did not start, with the server's output
    quint16 port() const { return m_port; }
    QString host() const { return QStringLiteral("127.0.0.1"); }
    QString site() const; // "127.0.0.1:<port>"
    QString root() const; // the served folder
    void stop();          // ends the server; its port refuses connections from then on

private:
    bool writeScript();
    bool run(const QString& python, const QStringList& arguments);
    QString output() const;

    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
    QString m_reason;
};
