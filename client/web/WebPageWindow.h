#pragma once

#include <QByteArray>
#include <QUrl>
#include <QWidget>

class QWebEngineView;

// tavlo-web's one window: the web site, opened already signed in. It keeps the name the tray
// program's web window always had (frmTLWeb) and reports on standard output when a page has
// loaded and when it is shown.
class WebPageWindow : public QWidget {
    Q_OBJECT
public:
    WebPageWindow();

    // Opens the URL; with post data the request is a POST carrying those bytes, and the
    // headers ("Name: value" lines, each ending in CR LF) go with it.
    void Navigate(const QUrl& url, const QByteArray& postData, const QByteArray& headers);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QWebEngineView* WebBrowser;
    int m_navigations = 0;
};
