#pragma once

#include <QByteArray>
#include <QUrl>
#include <QWebEngineView>
#include <QWidget>

// The program's own web window: the web site, opened already signed in.
class frmTLWeb : public QWidget {
    Q_OBJECT
public:
    frmTLWeb();
    void Form_Load();

    QWebEngineView* WebBrowser;

    // Opens the URL; with post data the request is a POST carrying those bytes, and the
    // headers ("Name: value" lines, each ending in CR LF) go with it.
    void Navigate(const QUrl& url, const QByteArray& postData, const QByteArray& headers);

    // Posts the signed-in user's name and password to the site's sign-in page under base.
    void PostSignIn(const QString& base);
    // Lets events run until the page being loaded has finished (or failed), at most limitMs.
    // The next navigation would otherwise cut the sign-in short.
    bool WaitForLoad(int limitMs);

    // The last request sent, for those who check what went out.
    struct Request {
        QUrl url;
        QByteArray method;
        QByteArray postData;
        QList<QPair<QByteArray, QByteArray>> headers;
    };
    const Request& LastRequest() const { return m_last; }

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    Request m_last;
    bool m_loading = false;
};
