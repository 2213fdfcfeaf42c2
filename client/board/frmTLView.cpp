#include "board/frmTLView.h"

#include "base/MsgBox.h"
#include "base/TLError.h"
#include "board/ToolbarIcons.h"
#include "config/frmTLSettings.h"
#include "directory/StatusNumbers.h"
#include "directory/TLGroup.h"
#include "directory/TLStatusRow.h"
#include "identity/frmTLLogin.h"
#include "notes/frmTLReadNotes.h"
#include "platform/Desktop.h"
#include "shell/TLMain.h"
#include "shell/frmTLMain.h"
#include "shell/frmTLWarningSysTray.h"
#include "shell/modTLMain.h"
#include "support/frmTLHelpDesk.h"
#include "support/modTLErrorManagement.h"
#include <QCloseEvent>
#include <QFileInfo>
#include <QHBoxLayout>

namespace {

constexpr int kExitSpaceIndex = 9;
constexpr std::int32_t kAdministrator = 10000000;

template <class Label = QLabel>
Label* namedLabel(const QString& name, const QString& text, QWidget* parent) {
    auto* label = new Label(text, parent);
    label->setObjectName(name);
    return label;
}

} // namespace

frmTLView::frmTLView() {
    setObjectName(QStringLiteral("frmTLView"));
    setWindowTitle(QStringLiteral("Tavlo"));
    setAttribute(Qt::WA_DeleteOnClose, false);

    m_central = new QWidget(this);
    setCentralWidget(m_central);
    buildFrames(m_central);
    buildLegend(m_central);
    buildSearchControls();
    buildToolbar();
    buildStatusBar();
    buildPopupMenu();

    tmrRefresh = new QTimer(this);
    tmrRefresh->setObjectName(QStringLiteral("tmrRefresh"));
    tmrRefresh->setInterval(1000);
    connectHandlers();
    tmrRefresh->start();
    resize(760, 520);
}

void frmTLView::buildFrames(QWidget* central) {
    fmeMain = new QWidget(central);
    fmeMain->setObjectName(QStringLiteral("fmeMain"));
    TabCategories = new KeyedTabBar(fmeMain);
    TabCategories->setObjectName(QStringLiteral("TabCategories"));
    TabCategories->setShape(QTabBar::RoundedWest);
    TabGroups = new KeyedTabBar(fmeMain);
    TabGroups->setObjectName(QStringLiteral("TabGroups"));
    TabGroups->setExpanding(false);
    gridStatus = new SpreadGrid(fmeMain);
    gridStatus->setObjectName(QStringLiteral("gridStatus"));
    fmeSearch = new QWidget(central);
    fmeSearch->setObjectName(QStringLiteral("fmeSearch"));
    barSearch = new ExplorerBar(fmeSearch);
    barSearch->setObjectName(QStringLiteral("barSearch"));
    fmeSearch->hide();
}

void frmTLView::buildToolbar() {
    ToolbarTop = addToolBar(QStringLiteral("ToolbarTop"));
    ToolbarTop->setObjectName(QStringLiteral("ToolbarTop"));
    ToolbarTop->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    ToolbarTop->setMovable(false);
    const QStringList captions = {QStringLiteral("My Status"),
                                  QStringLiteral("Refresh"),
                                  QStringLiteral("Search"),
                                  QStringLiteral("My Notes"),
                                  QStringLiteral("Settings"),
                                  QStringLiteral("Help"),
                                  QStringLiteral("Logoff"),
                                  QString(),
                                  QString(),
                                  QStringLiteral("Exit")};
    for (int i = 1; i <= captions.size(); ++i) {
        QAction* button = nullptr;
        if (i == kExitSpaceIndex) {
            auto* spacer = new QWidget(ToolbarTop);
            spacer->setObjectName(QStringLiteral("ExitSpace"));
            button = ToolbarTop->addWidget(spacer);
            button->setProperty("Key", QStringLiteral("ExitSpace"));
        } else {
            button = ToolbarTop->addAction(captions[i - 1]);
            button->setProperty("ImageIndex", i);
            button->setIcon(ToolbarIcons::Icon(i));
            button->setEnabled(!captions[i - 1].isEmpty());
        }
        connect(button, &QAction::triggered, this, [this, i] { ToolbarTop_ButtonClick(i); });
    }
    ToolbarButton(3)->setCheckable(true);
    // The notes window comes with its own release; the button shows the count meanwhile.
}

void frmTLView::buildLegend(QWidget* parent) {
    frmLegend = new QFrame(parent);
    frmLegend->setObjectName(QStringLiteral("frmLegend"));
    frmLegend->setWindowTitle(QStringLiteral("Legend / Quick Status Update"));
    auto* row = new QHBoxLayout(frmLegend);
    row->setContentsMargins(6, 0, 6, 0);
    auto* caption = new QLabel(frmLegend->windowTitle() + QLatin1Char(':'), frmLegend);
    QFont bold = caption->font();
    bold.setBold(true);
    caption->setFont(bold);
    row->addWidget(caption);
    auto entry = [&](LegendCircle*& circle, const char* circleName, QLabel*& label,
                     const char* labelName, ClickLabel*& trans, const char* transName,
                     const QString& text) {
        circle = new LegendCircle(frmLegend);
        circle->setObjectName(QString::fromLatin1(circleName));
        label = namedLabel(QString::fromLatin1(labelName), text, frmLegend);
        label->hide(); // the quick status label beside it carries the same word
        trans = namedLabel<ClickLabel>(QString::fromLatin1(transName), text, frmLegend);
        trans->setToolTip(QStringLiteral("Set your own status to ") + text);
        row->addWidget(circle);
        row->addWidget(label);
        row->addWidget(trans);
        row->addSpacing(8);
    };
    entry(StatusInCircle, "StatusInCircle", lblStatusIn, "lblStatusIn", lblStatusTransIn,
          "lblStatusTransIn", QStringLiteral("In"));
    entry(StatusOutCircle, "StatusOutCircle", lblStatusOut, "lblStatusOut", lblStatusTransOut,
          "lblStatusTransOut", QStringLiteral("Out"));
    entry(StatusUnavailableCircle, "StatusUnavailableCircle", lblStatusUnavailable,
          "lblStatusUnavailable", lblStatusTransUnavailable, "lblStatusTransUnavailable",
          QStringLiteral("Unavailable"));
    row->addStretch(1);
    lblChatAvailable =
        namedLabel(QStringLiteral("lblChatAvailable"), QStringLiteral("* Chat Active"), frmLegend);
    lblSupport =
        namedLabel<ClickLabel>(QStringLiteral("lblSupport"), QStringLiteral("Support"), frmLegend);
    lblAdmin =
        namedLabel<ClickLabel>(QStringLiteral("lblAdmin"), QStringLiteral("Admin"), frmLegend);
    row->addWidget(lblChatAvailable);
    row->addSpacing(8);
    row->addWidget(lblSupport);
    row->addWidget(lblAdmin);
}

void frmTLView::buildStatusBar() {
    StatusBarBottom = new KeyedStatusBar(this);
    StatusBarBottom->setObjectName(QStringLiteral("StatusBarBottom"));
    StatusBarBottom->AddPanel(QStringLiteral("fullname"), QString(), 1);
    StatusBarBottom->AddPanel(QStringLiteral("chatstatus"));
    StatusBarBottom->AddPanel(QStringLiteral("status"),
                              QStringLiteral("Click here to change your status"));
    StatusBarBottom->AddPanel(QStringLiteral("nextrefresh"));
    setStatusBar(StatusBarBottom);
}

void frmTLView::buildPopupMenu() {
    mnuStatusPopUp = new QMenu(this);
    mnuStatusPopUp->setObjectName(QStringLiteral("mnuStatusPopUp"));
    auto entry = [this](const char* name, const char* caption) {
        QAction* action = mnuStatusPopUp->addAction(QString::fromLatin1(caption));
        action->setObjectName(QString::fromLatin1(name));
        return action;
    };
    auto line = [this](const char* name) {
        mnuStatusPopUp->addSeparator()->setObjectName(QString::fromLatin1(name));
    };
    mnuStatusIn = entry("mnuStatusIn", "&In");
    mnuStatusOut = entry("mnuStatusOut", "&Out");
    mnuStatusUnavailable = entry("mnuStatusUnavailable", "&Unavailable");
    mnuStatusOther = entry("mnuStatusOther", "O&ther");
    line("mnuLine");
    mnuViewContactDetails = entry("mnuViewContactDetails", "&View Contact Details");
    mnuLeaveNote = entry("mnuLeaveNote", "Leave &Note");
    mnuChat = entry("mnuChat", "&Chat");
    line("mnuLine2");
    mnuAddMyFriends = entry("mnuAddMyFriends", "Add to My &Friends");
    line("mnuLine3");
    mnuAdmin = entry("mnuAdmin", "&Administrator");
}

void frmTLView::connectHandlers() {
    connect(TabCategories, &KeyedTabBar::TabClick, this, &frmTLView::TabCategories_Click);
    connect(TabGroups, &KeyedTabBar::TabClick, this, &frmTLView::TabGroups_Click);
    connect(tmrRefresh, &QTimer::timeout, this, &frmTLView::tmrRefresh_Timer);
    connect(gridStatus, &SpreadGrid::DblClick, this, &frmTLView::gridStatus_DblClick);
    connect(gridStatus, &SpreadGrid::RightClick, this, &frmTLView::gridStatus_RightClick);
    connect(gridStatus, &SpreadGrid::SpreadMouseMove, this, &frmTLView::gridStatus_MouseMove);
    connect(mnuStatusIn, &QAction::triggered, this, [this] { SetContextStatus(3); });
    connect(mnuStatusOut, &QAction::triggered, this, [this] { SetContextStatus(8); });
    connect(mnuStatusUnavailable, &QAction::triggered, this, [this] { SetContextStatus(6); });
    connect(mnuStatusOther, &QAction::triggered, this, &frmTLView::mnuStatusOther_Click);
    connect(mnuAddMyFriends, &QAction::triggered, this, &frmTLView::mnuAddMyFriends_Click);
    connect(mnuAdmin, &QAction::triggered, this, &frmTLView::mnuAdmin_Click);
    connect(lblStatusTransIn, &ClickLabel::Click, this, [this] { SetOwnStatus(3); });
    connect(lblStatusTransOut, &ClickLabel::Click, this, [this] { SetOwnStatus(8); });
    connect(lblStatusTransUnavailable, &ClickLabel::Click, this, [this] { SetOwnStatus(6); });
    connect(lblAdmin, &ClickLabel::Click, this, &frmTLView::lblAdmin_Click);
    connect(mnuChat, &QAction::triggered, this, &frmTLView::mnuChat_Click);
    connect(mnuLeaveNote, &QAction::triggered, this, &frmTLView::mnuLeaveNote_Click);
    connect(mnuViewContactDetails, &QAction::triggered, this,
            &frmTLView::mnuViewContactDetails_Click);
    connect(lblSupport, &ClickLabel::Click, this, [] { Form<frmTLHelpDesk>().show(); });
    connect(StatusBarBottom, &KeyedStatusBar::PanelClick, this,
            &frmTLView::StatusBarBottom_PanelClick);
    for (int i = 0; i < 2; ++i)
        connect(cmdAction[static_cast<size_t>(i)], &QPushButton::clicked, this,
                [this, i] { cmdAction_Click(i); });
}

void frmTLView::Form_Load() {
    FormatTabs();
    FormatGridColumns(false);
    FormatFormSize();
    BuildSearchPanel();
    if (SearchVisible)
        ToolbarButton(3)->setChecked(true);
    if (TLMain().ActiveUser().ValidUser()) {
        if (ActiveView == kStandardView)
            TabCategories->SelectKey(QStringLiteral("ViewChoiceStandard"));
        else if (ActiveView == kMiniView)
            TabCategories->SelectKey(QStringLiteral("ViewChoiceMini"));
        LoadLegendColors();
    }
    // A board opened anew shows the administration links only to an administrator.
    const bool admin = TLMain().ActiveUser().ValidUser() &&
                       TLMain().ActiveUser().CheckSecurity(kAdministrator, QString());
    lblAdmin->setVisible(admin);
    mnuAdmin->setVisible(admin);
    UpdateStatusBar();
    UpdateNoteCount();
}

QAction* frmTLView::ToolbarButton(int index) const {
    const auto actions = ToolbarTop->actions();
    return index >= 1 && index <= actions.size() ? actions[index - 1] : nullptr;
}

QString frmTLView::HelpFilePath() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/help/Tavlo.html");
}

void frmTLView::FormatTabs() {
    TabGroups->Clear();
    TabGroups->AddTab(QStringLiteral("AllKey"), QStringLiteral("All"));
    auto& groups = modTLMain::colGroups();
    for (long i = 1; i <= groups.Count(); ++i)
        TabGroups->AddTab(groups[i]->Key(), groups[i]->Name);
    TabGroups->AddTab(QStringLiteral("MyFriends"), QStringLiteral("My Friends"));
    TabCategories->Clear();
    TabCategories->AddTab(QStringLiteral("ViewChoiceStandard"), QStringLiteral("Standard"));
    TabCategories->AddTab(QStringLiteral("ViewChoiceMini"), QStringLiteral("Mini"));
}

void frmTLView::TabCategories_Click() {
    const QString key = TabCategories->SelectedKey();
    if (key == QStringLiteral("ViewChoiceMini"))
        ActiveView = kMiniView;
    else if (key == QStringLiteral("ViewChoiceStandard"))
        ActiveView = kStandardView;
    else
        return;
    ReloadGrid();
}

// The All tab works through the failed look-up: "AllKey" is no group, so the active group is
// dropped and the organisation's list comes back.
void frmTLView::TabGroups_Click() {
    auto& root = TLMain();
    try {
        const QString key = TabGroups->SelectedKey();
        if (key == QStringLiteral("MyFriends")) {
            ActiveScreen = 1;
        } else if (key == QStringLiteral("MyCompanies")) {
            ActiveScreen = 2;
        } else {
            ActiveScreen = 0;
            const auto group = modTLMain::colGroups()[key];
            root.SetActiveGroup(std::make_unique<TLGroup>(*group));
        }
        ReloadGrid();
    } catch (...) {
        root.SetActiveGroup(nullptr);
        ReloadGrid();
    }
}

// Every statement passes over its own failure: a status read that fails still opens the dialog.
void frmTLView::ToolbarTop_ButtonClick(int index) {
    auto& root = TLMain();
    switch (index) {
    case 1: {
        auto row = std::make_shared<TLStatusRow>();
        Guard([&] { row->GetContactStatus(root.ActiveContact().ContactSys); });
        Guard([&] { openStatusDialog(row); });
        break;
    }
    case 2:
        Guard([&] { ReloadGrid(); });
        break;
    case 3:
        SearchVisible = ToolbarButton(3)->isChecked();
        if (SearchVisible)
            txtName->setFocus();
        FormatFormSize();
        break;
    case 4:
        Guard([&] {
            auto& notes = Form<frmTLReadNotes>();
            notes.Contact = root.ActiveContact();
            notes.show();
        });
        break;
    case 5:
        Guard([&] { Form<frmTLSettings>().show(); });
        break;
    case 6:
        Guard([&] {
            if (QFileInfo::exists(HelpFilePath()))
                Desktop::OpenUrl(QUrl::fromLocalFile(HelpFilePath()));
            else
                MsgBox(QStringLiteral("The Help has not been installed on this system."));
        });
        break;
    case 7:
        Guard([&] { root.ActiveUser().Logout(); });
        Guard([&] { modTLMain::BuildMenuItems(); });
        Guard([&] { Form<frmTLLogin>().Login(true); });
        FormRegistry::instance().unload(this);
        break;
    case 10:
        if (root.Settings().ExitShutdown) {
            Guard([&] {
                if (Socket)
                    modTLMain::ChatDisConnect();
            });
            Unload<frmTLMain>();
        } else {
            setWindowState(windowState() | Qt::WindowMinimized);
        }
        break;
    default:
        break;
    }
}

QString frmTLView::chatStatusText() const {
    const auto& settings = TLMain().Settings();
    if (!Socket)
        return QStringLiteral("Chat: Offline");
    if (settings.ChatConnected)
        return QStringLiteral("Chat: Online");
    const auto* tray = LoadedForm<frmTLMain>();
    if ((tray && tray->tmrChatReconnect->isActive()) || settings.ChatConnecting)
        return QStringLiteral("Chat: Connecting");
    return QStringLiteral("Chat: Offline");
}

void frmTLView::UpdateStatusBar() {
    try {
        auto& root = TLMain();
        StatusBarBottom->Panel(QStringLiteral("fullname"))
            ->setText(root.ActiveContact().FullName());
        StatusBarBottom->Panel(QStringLiteral("status"))
            ->setText(QStringLiteral("Status: ") + root.ActiveStatus().StatusText);
        StatusBarBottom->Panel(QStringLiteral("chatstatus"))->setText(chatStatusText());
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLView:UpdateStatusBarError"));
    }
}

// Counts the seconds while the board is on screen and reloads when the interval is reached.
// The count must hit the interval exactly: lowering the interval below it stops the automatic
// reloads until some other reload starts the count again.
void frmTLView::tmrRefresh_Timer() {
    auto& settings = TLMain().Settings();
    QLabel* panel = StatusBarBottom->Panel(QStringLiteral("nextrefresh"));
    if (isVisible() && settings.NetworkConnected()) {
        ++lngRefreshTimerSeconds;
        panel->setText(QStringLiteral("Refresh in: ") +
                       QString::number(settings.RefreshInterval - lngRefreshTimerSeconds) +
                       QStringLiteral(" seconds"));
        if (lngRefreshTimerSeconds == settings.RefreshInterval) {
            lngRefreshTimerSeconds = 0;
            ReloadGrid();
        }
    } else {
        panel->setText(QStringLiteral("No Network Detected"));
        lngRefreshTimerSeconds = 0;
    }
}

void frmTLView::LoadLegendColors() {
    try {
        auto& root = TLMain();
        auto& data = root.DataAccess();
        auto rs =
            data.LoadADOFromWeb(QStringLiteral("EXEC tl_GetAvailableColors ") +
                                QString::number(root.ActiveOrganization().OrganizationSys) +
                                QLatin1Char(',') + QString::number(root.ActiveUser().UserSys()));
        if (!rs)
            Raise(err::NoObject);
        for (; !rs->Eof(); rs->MoveNext()) {
            const auto status = data.DBOLong(rs->Fields(QStringLiteral("StatusSys")).Value());
            LegendCircle* circle = status == kStatusIn            ? StatusInCircle
                                   : status == kStatusUnavailable ? StatusUnavailableCircle
                                                                  : StatusOutCircle;
            circle->SetFillColor(root.Functions().GetBackColorValue(
                data.DBOStr(rs->Fields(QStringLiteral("ColorCode")).Value())));
        }
        rs->Close();
    } catch (...) {
        if (CurrentError().number != err::NoObject)
            modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLMain:LoadLegendColors"));
    }
}

void frmTLView::UpdateNoteCount() {
    const std::int32_t n = TLMain().ActiveContact().NotesUnread;
    QAction* button = ToolbarButton(4);
    const int image = n == 0 ? 4 : 9;
    if (n == 0)
        button->setText(QStringLiteral("My Notes"));
    else
        button->setText(n < 10 ? QStringLiteral("Notes (%1)").arg(n)
                               : QStringLiteral("(%1)").arg(n));
    button->setProperty("ImageIndex", image);
    button->setIcon(ToolbarIcons::Icon(image));
}

// Closing isn't quitting: a signed-in user is told where the program went.
void frmTLView::closeEvent(QCloseEvent* event) {
    if (Socket)
        modTLMain::ChatDisConnect();
    if (TLMain().ActiveUser().ValidUser())
        frmTLWarningSysTray::ShowUnlessDeclined();
    event->accept();
    FormRegistry::instance().unload(this);
}

void frmTLView::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || !(windowState() & Qt::WindowMinimized))
        return;
    frmTLWarningSysTray::ShowUnlessDeclined();
    QTimer::singleShot(0, this, &QWidget::hide);
}

void frmTLView::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    if (!(windowState() & Qt::WindowMinimized))
        FormatFormSize();
}
