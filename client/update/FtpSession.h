#pragma once

#include <QObject>
#include <QString>
#include <memory>

// An FTP session for the update download: logs in once, then changes directory, lists one file
// and fetches it over the same control connection (passive mode, binary transfers). It runs
// on the thread's Qt event loop with libcurl underneath: every action returns at once and its
// outcome arrives later as events, raised only from the event loop and never from inside a
// call, so a handler may start the next action or delete the session.
//
// Each action ends with exactly one final event: Connected for Connect, Done or Error for the
// others. The server's reply lines (Reply) and, for GetFile, Progress come before it in the
// order they arrived. An action started while another one runs fails with Error "Busy" and
// leaves the running one alone; Disconnect is the exception: it stops a running action, which
// then raises nothing more.
//
// An Error from the server or the network ends the session (State() 0); the program connects
// anew to go on. Directories follow FTP's rules: a path starting with "/" is absolute, any
// other path is taken from the current directory, and "" is the directory the login lands in.
class FtpSession : public QObject {
    Q_OBJECT
public:
    explicit FtpSession(QObject* parent = nullptr);
    // Quiet: no events from here on. Stops a running action and closes as Disconnect does.
    ~FtpSession() override;

    QString Host; // "host" or "host:port" (an IPv6 address in brackets); without a port, 21
    QString User; // empty: anonymous
    QString Password;
    // Seconds allowed for the next action. For GetFile it is the longest the download may
    // stall without a byte arriving, not a cap on its whole length: an update over a slow
    // line may take longer than any fixed limit while still moving.
    long Timeout = 5;

    int State() const; // 1 while connected (from Connected until Disconnect or an Error), else 0

    void Connect(); // logs in (anew, if connected) -> Connected(0), or Error
    void ChangeDirectory(const QString& path); // checks the directory exists -> Done(), or Error
    // "LIST fileName" in the current directory -> List(first line, CR LF cut) then Done(). A
    // file the server does not have gives List("") then Done(), not an Error.
    void ListEntry(const QString& fileName);
    // Downloads into localPath, which is created or truncated at once -> Progress(bytes)…
    // then Done(), or Error. What arrived stays in the file when the download fails or stops.
    void GetFile(const QString& localPath, const QString& remoteName);
    // Stops a running action and closes the connection -> Done(). libcurl says QUIT and waits
    // for the answer inside this call: on a hung server, as long as the last action's Timeout.
    void Disconnect();

signals:
    void Connected(int unused);
    void Reply(const QString& line); // one reply line of the server, without CR LF
    void List(const QString& entry);
    void Done();
    void Progress(qint64 bytes); // received so far; at most ~20 a second, the final count last
    // The FTP reply code when the server refused (e.g. 530, 550), else libcurl's error number,
    // or one of the session's own: 10036 "Busy", 10057 "Not connected", 23 local file.
    void Error(long number, const QString& text);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
