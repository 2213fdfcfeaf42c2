#pragma once

#include <QByteArray>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QUrl>

// The program's web window: the web site, opened already signed in. The window itself is
// tavlo-web, a program beside this one, started at the first request and fed commands on its
// standard input; while it runs every request goes to that one window. The tray process so
// carries no browser engine until a page is wanted, and then only in the other process.
class WebWindow : public QObject {
    Q_OBJECT
public:
    // The one instance, made at its first use and owned by the application object.
    static WebWindow& Instance();
    // The program started: tavlo-web beside this program unless a test sets another path.
    static void SetProgram(const QString& path);
    static QString Program();

    // Opens the URL; with post data the request is a POST carrying those bytes, and the
    // headers ("Name: value" lines, each ending in CR LF) go with it. False (after telling the
    // user) when the window program cannot be started.
    bool Navigate(const QUrl& url, const QByteArray& postData, const QByteArray& headers);
    // Posts the signed-in user's name and password to the site's sign-in page under base.
    bool PostSignIn(const QString& base);
    // Shows the window, maximized.
    bool Show();
    // Lets events run until the page being loaded has finished (or failed), at most limitMs.
    // The next navigation would otherwise cut the sign-in short.
    bool WaitForLoad(int limitMs);

    bool IsRunning() const { return m_process.state() != QProcess::NotRunning; }
    qint64 ProcessId() const { return m_process.processId(); }
    // The window's title once tavlo-web reported it shown and maximized; empty before.
    const QString& ShownTitle() const { return m_shownTitle; }

    ~WebWindow() override;

private:
    explicit WebWindow(QObject* owner);
    bool ensureRunning();
    bool send(const QByteArray& line);
    void readAnswers();

    QProcess m_process;
    QByteArray m_pending;
    QString m_shownTitle;
    int m_navigations = 0; // sent to the running tavlo-web
    bool m_loading = false;
};
