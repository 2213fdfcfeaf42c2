#include "shell/frmTLWeb.h"

#include "shell/TLMain.h"
#include "wire/Cp1252.h"
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <QWebEngineHttpRequest>

namespace {
// 100 and 50 twips at the usual 15 twips a pixel.
constexpr int kBottomMargin = 7;
constexpr int kBrowserMargin = 3;
} // namespace

frmTLWeb::frmTLWeb() : WebBrowser(new QWebEngineView(this)) {
    setObjectName(QStringLiteral("frmTLWeb"));
    setWindowTitle(QStringLiteral("Tavlo - The Internet Electronic In / Out Board"));
    WebBrowser->setObjectName(QStringLiteral("WebBrowser"));
    connect(WebBrowser, &QWebEngineView::loadFinished, this, [this] { m_loading = false; });
}

void frmTLWeb::Form_Load() {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    setGeometry(0, 0, screen.width(), screen.height() - kBottomMargin);
}

void frmTLWeb::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!(windowState() & Qt::WindowMaximized))
        QTimer::singleShot(0, this, &QWidget::showMaximized);
}

void frmTLWeb::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    WebBrowser->setGeometry(0, 0, qMax(0, width() - kBrowserMargin),
                            qMax(0, height() - kBrowserMargin));
}

void frmTLWeb::Navigate(const QUrl& url, const QByteArray& postData, const QByteArray& headers) {
    QWebEngineHttpRequest request(url);
    m_last = {url, QByteArrayLiteral("GET"), postData, {}};
    if (!postData.isNull()) {
        request.setMethod(QWebEngineHttpRequest::Post);
        request.setPostData(postData);
        m_last.method = QByteArrayLiteral("POST");
    }
    for (const QByteArray& line : headers.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        const int colon = trimmed.indexOf(':');
        if (colon <= 0)
            continue;
        const QByteArray name = trimmed.left(colon).trimmed();
        const QByteArray value = trimmed.mid(colon + 1).trimmed();
        request.setHeader(name, value);
        m_last.headers.append({name, value});
    }
    m_loading = true;
    WebBrowser->load(request);
}

void frmTLWeb::PostSignIn(const QString& base) {
    auto& user = TLMain().ActiveUser();
    const QByteArray postData =
        wire::cp1252::encode(QStringLiteral("UserName=") + user.UserName() +
                             QStringLiteral("&Password=") + user.Password());
    Navigate(QUrl(base + QStringLiteral("/logincheck.asp")), postData,
             "Content-Type: application/x-www-form-urlencoded\r\n");
}

bool frmTLWeb::WaitForLoad(int limitMs) {
    QElapsedTimer clock;
    clock.start();
    while (m_loading && clock.elapsed() < limitMs)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    return !m_loading;
}
