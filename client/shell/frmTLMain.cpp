#include "shell/frmTLMain.h"

#include "base/MsgBox.h"
#include "base/Screen.h"
#include "base/TLError.h"
#include "board/frmTLView.h"
#include "config/frmTLSettings.h"
#include "identity/frmTLLogin.h"
#include "notes/frmTLContactSelection.h"
#include "platform/Desktop.h"
#include "platform/TrayProtocol.h"
#include "shell/StartTrace.h"
#include "shell/TLMain.h"
#include "shell/TrayPictures.h"
#include "shell/WebWindow.h"
#include "shell/frmTLSplash.h"
#include "shell/modTLMain.h"
#include "shell/modTLMouseActivity.h"
#include "support/frmTLAbout.h"
#include <QCoreApplication>
#include <QEvent>

namespace {
constexpr int kStandardView = 1;
constexpr int kMiniView = 2;
constexpr int kCheckNetworkMs = 1000;
constexpr int kUpdateStatusMs = 30000;
constexpr int kChatReconnectMs = 30000;
} // namespace

frmTLMain::frmTLMain()
    : trayIcon(new QSystemTrayIcon(this)), mnuPopupSys(new QMenu(this)),
      tmrCheckNetwork(new QTimer(this)), tmrUpdateStatus(new QTimer(this)),
      tmrMouseActivity(new QTimer(this)), tmrChatReconnect(new QTimer(this)) {
    setObjectName(QStringLiteral("frmTLMain"));
    setWindowTitle(QStringLiteral("Test"));
    trayIcon->setObjectName(QStringLiteral("trayIcon"));
    buildMenu();
    connectMenu();
    connectTimers();
    trayIcon->setContextMenu(mnuPopupSys);
    connect(trayIcon, &QSystemTrayIcon::activated, this, &frmTLMain::trayActivated);
}

frmTLMain::~frmTLMain() = default;

QAction* frmTLMain::addEntry(const char* name, const QString& caption) {
    QAction* entry = mnuPopupSys->addAction(caption);
    entry->setObjectName(QString::fromLatin1(name));
    return entry;
}

QAction* frmTLMain::addSeparator(const char* name) {
    QAction* line = mnuPopupSys->addSeparator();
    line->setObjectName(QString::fromLatin1(name));
    return line;
}

void frmTLMain::buildMenu() {
    mnuPopupSys->setObjectName(QStringLiteral("mnuPopupSys"));
    mnuPopupSys->setTitle(QStringLiteral("SysTray"));
    mnuPopStatusMenu = new QMenu(QStringLiteral("Change Status"), mnuPopupSys);
    mnuPopStatus = mnuPopupSys->addMenu(mnuPopStatusMenu);
    mnuPopStatus->setObjectName(QStringLiteral("mnuPopStatus"));
    QAction* first = mnuPopStatusMenu->addAction(QStringLiteral("Available"));
    first->setObjectName(QStringLiteral("mnuPopOptions"));
    first->setCheckable(true);
    mnuPopOptions.push_back(first);
    connect(first, &QAction::triggered, this, [this] { mnuPopOptions_Click(0); });

    mnuBlankLine0 = addSeparator("mnuBlankLine0");
    mnuSendInstantMessage =
        addEntry("mnuSendInstantMessage", QStringLiteral("Send Instant Message"));
    mnuLeaveMessage = addEntry("mnuLeaveMessage", QStringLiteral("Leave Note"));
    mnuBlankLine1 = addSeparator("mnuBlankLine1");
    mnuSignIn = addEntry("mnuSignIn", QStringLiteral("Sign In"));
    mnuSignInAs = addEntry("mnuSignInAs", QStringLiteral("Sign In As ..."));
    mnuSignOut = addEntry("mnuSignOut", QStringLiteral("Sign Out"));
    mnuBlankLine2 = addSeparator("mnuBlankLine2");
    mnuMiniView = addEntry("mnuMiniView", QStringLiteral("Open Mini View"));
    mnuStandardView = addEntry("mnuStandardView", QStringLiteral("Open Standard View"));
    mnuPopRestore = addEntry("mnuPopRestore", QStringLiteral("Open Tavlo Web"));
    mnuBlankLine3 = addSeparator("mnuBlankLine3");
    mnuPopConfigure = addEntry("mnuPopConfigure", QStringLiteral("Settings"));
    mnuResetConnection = addEntry("mnuResetConnection", QStringLiteral("Reset Connection"));
    mnuBlankLine4 = addSeparator("mnuBlankLine4");
    mnuAboutTavlo = addEntry("mnuAboutTavlo", QStringLiteral("&About"));
    mnuBlankLine5 = addSeparator("mnuBlankLine5");
    mnuPopExit = addEntry("mnuPopExit", QStringLiteral("Exit"));
}

void frmTLMain::connectMenu() {
    connect(mnuSignIn, &QAction::triggered, this, &frmTLMain::mnuSignIn_Click);
    connect(mnuSignInAs, &QAction::triggered, this, &frmTLMain::mnuSignInAs_Click);
    connect(mnuSignOut, &QAction::triggered, this, &frmTLMain::mnuSignOut_Click);
    connect(mnuMiniView, &QAction::triggered, this, [this] { ShowApplicationView(kMiniView); });
    connect(mnuStandardView, &QAction::triggered, this,
            [this] { ShowApplicationView(kStandardView); });
    connect(mnuPopRestore, &QAction::triggered, this, &frmTLMain::ShowWebBrowser);
    connect(mnuPopConfigure, &QAction::triggered, this, &frmTLMain::mnuPopConfigure_Click);
    connect(mnuResetConnection, &QAction::triggered, this,
            [] { TLMain().DataAccess().ConnectionEnabled = true; });
    connect(mnuPopExit, &QAction::triggered, this, &frmTLMain::mnuPopExit_Click);
    connect(mnuSendInstantMessage, &QAction::triggered, this,
            &frmTLMain::mnuSendInstantMessage_Click);
    connect(mnuLeaveMessage, &QAction::triggered, this, &frmTLMain::mnuLeaveMessage_Click);
    connect(mnuAboutTavlo, &QAction::triggered, this, &frmTLMain::mnuAboutTavlo_Click);
}

// The poll and the network watch run from here to the end whether anyone is signed in or not.
// The idle watch runs only if someone is signed in at this moment.
void frmTLMain::connectTimers() {
    tmrCheckNetwork->setObjectName(QStringLiteral("tmrCheckNetwork"));
    tmrCheckNetwork->setInterval(kCheckNetworkMs);
    connect(tmrCheckNetwork, &QTimer::timeout, this, &frmTLMain::tmrCheckNetwork_Timer);
    tmrUpdateStatus->setObjectName(QStringLiteral("tmrUpdateStatus"));
    tmrUpdateStatus->setInterval(kUpdateStatusMs);
    connect(tmrUpdateStatus, &QTimer::timeout, this, &frmTLMain::tmrUpdateStatus_Timer);
    tmrMouseActivity->setObjectName(QStringLiteral("tmrMouseActivity"));
    connect(tmrMouseActivity, &QTimer::timeout, this, &frmTLMain::tmrMouseActivity_Timer);
    // Never started: only its line in the chat panel's rule and its handler exist.
    tmrChatReconnect->setObjectName(QStringLiteral("tmrChatReconnect"));
    tmrChatReconnect->setInterval(kChatReconnectMs);
    connect(tmrChatReconnect, &QTimer::timeout, this, &frmTLMain::tmrChatReconnect_Timer);
}

void frmTLMain::Form_Load() {
    tmrCheckNetwork->start();
    tmrUpdateStatus->start();
    if (TLMain().ActiveUser().ValidUser())
        modTLMouseActivity::StartTimer(*tmrMouseActivity);
    hide();
    ChangeSystemTray(QStringLiteral("Tavlo"), TrayPictures::Icon(1));
    trayIcon->show();
    TraceStart("tray");
}

void frmTLMain::Form_Unload() {
    trayIcon->hide();
    if (TLMain().ActiveUser().ValidUser())
        TLMain().ActiveUser().Logout();
    auto& forms = FormRegistry::instance();
    for (const char* name :
         {"frmTLStatus", "frmTLSplash", "frmTLSettings", "frmTLView", "frmTLLogin"})
        Guard([&] { forms.unload(forms.findByName(QString::fromLatin1(name))); });
    QCoreApplication::quit();
}

void frmTLMain::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && (windowState() & Qt::WindowMinimized))
        hide();
}

void frmTLMain::trayActivated(QSystemTrayIcon::ActivationReason reason) {
    const bool opens = reason == QSystemTrayIcon::DoubleClick ||
                       (reason == QSystemTrayIcon::Trigger && !TrayProtocol::HasDoubleClick());
    if (opens)
        ShowApplicationView(TLMain().Settings().ViewChoice);
    else if (reason == QSystemTrayIcon::Trigger)
        DoEvents();
}

void frmTLMain::LoadOption(std::size_t index) {
    while (mnuPopOptions.size() <= index) {
        const std::size_t position = mnuPopOptions.size();
        QAction* entry = mnuPopStatusMenu->addAction(QString());
        entry->setObjectName(QStringLiteral("mnuPopOptions"));
        entry->setCheckable(true);
        connect(entry, &QAction::triggered, this,
                [this, position] { mnuPopOptions_Click(position); });
        mnuPopOptions.push_back(entry);
    }
}

void frmTLMain::UnloadOption(std::size_t index) {
    if (index == 0 || index >= mnuPopOptions.size())
        Raise(err::BadArgument);
    delete mnuPopOptions[index];
    mnuPopOptions.erase(mnuPopOptions.begin() + static_cast<std::ptrdiff_t>(index));
}

void frmTLMain::ChangeSystemTray(const QString& tip, const QIcon& picture) {
    trayIcon->setIcon(picture);
    ChangeToolTip(tip);
}

void frmTLMain::ChangeToolTip(const QString& tip) {
    m_tip = tip.left(64);
    QString shown = m_tip;
    shown.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    trayIcon->setToolTip(shown);
}

void frmTLMain::EnableMenu(bool enable) {
    if (!enable) {
        for (QAction* entry : {mnuMiniView, mnuSignIn, mnuSignInAs, mnuSignOut, mnuStandardView,
                               mnuPopStatus, mnuLeaveMessage, mnuSendInstantMessage})
            entry->setEnabled(false);
        return;
    }
    if (TLMain().ActiveUser().ValidUser()) {
        for (QAction* entry :
             {mnuMiniView, mnuSignOut, mnuStandardView, mnuPopStatus, mnuLeaveMessage})
            entry->setEnabled(true);
    } else {
        mnuSignIn->setEnabled(true);
        mnuSignInAs->setEnabled(true);
    }
}

void frmTLMain::ShowApplicationView(int view) {
    Screen::SetMousePointer(Screen::vbHourglass);
    Guard([view] {
        if (TLMain().ActiveUser().ValidUser()) {
            auto& board = Form<frmTLView>();
            board.ActiveView = view;
            board.setWindowState(board.windowState() &
                                 ~(Qt::WindowMinimized | Qt::WindowMaximized));
            board.FormatTabs();
            board.raise();
            board.activateWindow();
            board.TabCategories->SelectKey(view == kMiniView
                                               ? QStringLiteral("ViewChoiceMini")
                                               : QStringLiteral("ViewChoiceStandard"));
            board.show();
        } else if (!IsLoaded<frmTLLogin>() || !LoadedForm<frmTLLogin>()->isVisible()) {
            Form<frmTLLogin>().Login(false);
        }
    });
    Screen::SetMousePointer(Screen::vbDefault);
}

void frmTLMain::ShowWebBrowser() {
    setWindowState(Qt::WindowMaximized);
    auto& web = WebWindow::Instance();
    if (web.Show())
        web.PostSignIn(TLMain().Settings().WebAddress());
}

void frmTLMain::mnuPopOptions_Click(std::size_t index) {
    auto& root = TLMain();
    auto& statuses = modTLMain::colStatuses();
    Guard([&] {
        const auto status = statuses[static_cast<long>(index) + 1];
        root.ActiveContact().UpdateContactStatus(root.ActiveUser().ContactSys(), status->StatusSys,
                                                 QString(), QString(), QString());
        root.ActiveStatus().CopyStatusObject(*status);
        modTLMain::BuildMenuItems();
    });
}

void frmTLMain::mnuPopConfigure_Click() {
    setWindowState(Qt::WindowNoState);
    auto& settings = Form<frmTLSettings>();
    settings.raise();
    settings.activateWindow();
    settings.show();
}

void frmTLMain::mnuPopExit_Click() {
    if (auto* board = LoadedForm<frmTLView>(); board && board->Socket)
        modTLMain::ChatDisConnect();
    Unload<frmTLMain>();
}

void frmTLMain::mnuSendInstantMessage_Click() {
    const auto& settings = TLMain().Settings();
    if (!settings.ChatConnected && settings.NetworkConnected())
        modTLMain::ChatConnect(false);
    showContactSelection(frmTLContactSelection::kChat);
}

void frmTLMain::mnuLeaveMessage_Click() {
    showContactSelection(frmTLContactSelection::kNote);
}

void frmTLMain::showContactSelection(int contactFunction) {
    auto& picker = Form<frmTLContactSelection>();
    picker.ContactFunction = contactFunction;
    picker.show();
}

void frmTLMain::mnuAboutTavlo_Click() {
    Form<frmTLAbout>().exec();
}

void frmTLMain::mnuSignIn_Click() {
    Form<frmTLLogin>().Login(false);
}

void frmTLMain::mnuSignInAs_Click() {
    TLMain().ActiveUser().Logout();
    Form<frmTLLogin>().Login(true);
}

void frmTLMain::mnuSignOut_Click() {
    TLMain().ActiveUser().Logout();
}
