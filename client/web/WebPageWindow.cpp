#include "web/WebPageWindow.h"

#include "web/WebCommand.h"
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <QWebEngineHttpRequest>
#include <QWebEngineView>
#include <cstdio>

namespace {
// 100 and 50 twips at the usual 15 twips a pixel.
constexpr int kBottomMargin = 7;
constexpr int kBrowserMargin = 3;

void report(const WebCommand& answer) {
    const QByteArray line = answer.encode();
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fflush(stdout);
}
} // namespace

WebPageWindow::WebPageWindow() : WebBrowser(new QWebEngineView(this)) {
    setObjectName(QStringLiteral("frmTLWeb"));
    setWindowTitle(QStringLiteral("Tavlo - The Internet Electronic In / Out Board"));
    WebBrowser->setObjectName(QStringLiteral("WebBrowser"));
    // Tagged with the latest navigate, so that the tray doesn't take the end of an earlier
    // page (or of the first, blank one) for the page it waits for.
    connect(WebBrowser, &QWebEngineView::loadFinished, this, [this](bool ok) {
        report(WebCommand::reply(WebCommand::Kind::Loaded, ok ? "1" : "0", m_navigations));
    });
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    setGeometry(0, 0, screen.width(), screen.height() - kBottomMargin);
}

void WebPageWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!(windowState() & Qt::WindowMaximized))
        QTimer::singleShot(0, this, &QWidget::showMaximized);
}

void WebPageWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isVisible() && isMaximized())
        report(WebCommand::reply(WebCommand::Kind::Shown, windowTitle().toUtf8()));
}

void WebPageWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    WebBrowser->setGeometry(0, 0, qMax(0, width() - kBrowserMargin),
                            qMax(0, height() - kBrowserMargin));
}

void WebPageWindow::Navigate(const QUrl& url, const QByteArray& postData,
                             const QByteArray& headers) {
    QWebEngineHttpRequest request(url);
    if (!postData.isNull()) {
        request.setMethod(QWebEngineHttpRequest::Post);
        request.setPostData(postData);
    }
    for (const QByteArray& line : headers.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        const int colon = trimmed.indexOf(':');
        if (colon <= 0)
            continue;
        request.setHeader(trimmed.left(colon).trimmed(), trimmed.mid(colon + 1).trimmed());
    }
    ++m_navigations;
    WebBrowser->load(request);
}
