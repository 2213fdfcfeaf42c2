#include "shell/WebWindow.h"

#include "base/MsgBox.h"
#include "shell/TLMain.h"
#include "web/WebCommand.h"
#include "wire/Cp1252.h"
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPointer>

namespace {

QString& programOverride() {
    static QString path;
    return path;
}

// Long enough for a loaded machine to fork and exec, short enough not to hang the tray.
constexpr int kStartWaitMs = 10000;
constexpr int kEndWaitMs = 5000;

} // namespace

WebWindow& WebWindow::Instance() {
    static QPointer<WebWindow> instance;
    if (!instance)
        instance = new WebWindow(QCoreApplication::instance());
    return *instance;
}

void WebWindow::SetProgram(const QString& path) {
    programOverride() = path;
}

QString WebWindow::Program() {
    if (!programOverride().isEmpty())
        return programOverride();
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("tavlo-web"));
}

WebWindow::WebWindow(QObject* owner) : QObject(owner) {
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &WebWindow::readAnswers);
    connect(&m_process, &QProcess::finished, this, [this] {
        m_loading = false;
        m_navigations = 0;
        m_shownTitle.clear();
        m_pending.clear();
    });
}

// Closing its input ends tavlo-web, which closes its window with the tray program.
WebWindow::~WebWindow() {
    if (!IsRunning())
        return;
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(kEndWaitMs))
        m_process.kill();
    m_process.waitForFinished(kEndWaitMs);
}

bool WebWindow::ensureRunning() {
    if (IsRunning())
        return true;
    const QString program = Program();
    if (QFileInfo(program).isExecutable()) {
        m_process.start(program, {});
        if (m_process.waitForStarted(kStartWaitMs))
            return true;
    }
    MsgBox(QStringLiteral("The web window could not be opened: ") +
               QDir::toNativeSeparators(program) +
               QStringLiteral(" is missing or cannot be started."),
           vb::vbExclamation);
    return false;
}

bool WebWindow::send(const QByteArray& line) {
    if (!ensureRunning())
        return false;
    m_process.write(line);
    return true;
}

void WebWindow::readAnswers() {
    m_pending.append(m_process.readAllStandardOutput());
    qsizetype end;
    while ((end = m_pending.indexOf('\n')) >= 0) {
        const WebCommand answer = WebCommand::decode(m_pending.left(end));
        m_pending.remove(0, end + 1);
        if (answer.kind == WebCommand::Kind::Loaded && answer.number == m_navigations)
            m_loading = false;
        else if (answer.kind == WebCommand::Kind::Shown)
            m_shownTitle = QString::fromUtf8(answer.text);
    }
}

bool WebWindow::Navigate(const QUrl& url, const QByteArray& postData, const QByteArray& headers) {
    if (!send(WebCommand::navigate(url, postData, headers).encode()))
        return false;
    ++m_navigations;
    m_loading = true;
    return true;
}

bool WebWindow::PostSignIn(const QString& base) {
    auto& user = TLMain().ActiveUser();
    const QByteArray postData =
        wire::cp1252::encode(QStringLiteral("UserName=") + user.UserName() +
                             QStringLiteral("&Password=") + user.Password());
    return Navigate(QUrl(base + QStringLiteral("/logincheck.asp")), postData,
                    "Content-Type: application/x-www-form-urlencoded\r\n");
}

bool WebWindow::Show() {
    return send(WebCommand{WebCommand::Kind::Show, {}, {}, {}, {}, 0}.encode());
}

bool WebWindow::WaitForLoad(int limitMs) {
    QElapsedTimer clock;
    clock.start();
    while (m_loading && IsRunning() && clock.elapsed() < limitMs)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    return !m_loading;
}
