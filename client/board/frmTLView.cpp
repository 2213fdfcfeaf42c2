#include "board/frmTLView.h"

#include "base/TLError.h"
#include "directory/TLGroup.h"
#include "platform/SettingsStore.h"
#include "shell/TLMain.h"
#include "shell/frmTLWarningSysTray.h"
#include "shell/modTLMain.h"
#include "support/modTLErrorManagement.h"
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace {

constexpr std::int32_t kStatusIn = 3;
constexpr std::int32_t kStatusUnavailable = 6;

QLabel* namedLabel(const QString& name, const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(name);
    return label;
}

} // namespace

frmTLView::frmTLView() {
    setObjectName(QStringLiteral("frmTLView"));
    setWindowTitle(QStringLiteral("Tavlo"));
    setAttribute(Qt::WA_DeleteOnClose, false);

    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    TabGroups = new KeyedTabBar(central);
    TabGroups->setObjectName(QStringLiteral("TabGroups"));
    TabCategories = new KeyedTabBar(central);
    TabCategories->setObjectName(QStringLiteral("TabCategories"));
    layout->addWidget(TabGroups);
    layout->addStretch(1);
    layout->addWidget(TabCategories);
    buildLegend(central);
    layout->addWidget(frmLegend);
    setCentralWidget(central);

    buildToolbar();
    buildStatusBar();

    mnuAdmin = new QAction(QStringLiteral("Admin"), this);
    mnuAdmin->setObjectName(QStringLiteral("mnuAdmin"));
    addAction(mnuAdmin);
    tmrChatReconnect = new QTimer(this);
    tmrChatReconnect->setObjectName(QStringLiteral("tmrChatReconnect"));
    resize(640, 480);
}

void frmTLView::buildToolbar() {
    ToolbarTop = addToolBar(QStringLiteral("ToolbarTop"));
    ToolbarTop->setObjectName(QStringLiteral("ToolbarTop"));
    ToolbarTop->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
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
    for (int i = 0; i < captions.size(); ++i) {
        QAction* button = ToolbarTop->addAction(captions[i]);
        button->setProperty("ImageIndex", i + 1);
        if (i == 8)
            button->setProperty("Key", QStringLiteral("ExitSpace"));
    }
    ToolbarButton(3)->setCheckable(true);
}

void frmTLView::buildLegend(QWidget* parent) {
    frmLegend = new QGroupBox(QStringLiteral("Legend / Quick Status Update"), parent);
    frmLegend->setObjectName(QStringLiteral("frmLegend"));
    auto* row = new QHBoxLayout(frmLegend);
    auto circle = [&](const QString& name) {
        auto* c = new LegendCircle(frmLegend);
        c->setObjectName(name);
        row->addWidget(c);
        return c;
    };
    StatusInCircle = circle(QStringLiteral("StatusInCircle"));
    lblStatusIn = namedLabel(QStringLiteral("lblStatusIn"), QStringLiteral("In"), frmLegend);
    row->addWidget(lblStatusIn);
    StatusOutCircle = circle(QStringLiteral("StatusOutCircle"));
    lblStatusOut = namedLabel(QStringLiteral("lblStatusOut"), QStringLiteral("Out"), frmLegend);
    row->addWidget(lblStatusOut);
    StatusUnavailableCircle = circle(QStringLiteral("StatusUnavailableCircle"));
    lblStatusUnavailable = namedLabel(QStringLiteral("lblStatusUnavailable"),
                                      QStringLiteral("Unavailable"), frmLegend);
    row->addWidget(lblStatusUnavailable);
    row->addStretch(1);
    lblChatAvailable =
        namedLabel(QStringLiteral("lblChatAvailable"), QStringLiteral("* Chat Active"), frmLegend);
    lblSupport = namedLabel(QStringLiteral("lblSupport"), QStringLiteral("Support"), frmLegend);
    lblAdmin = namedLabel(QStringLiteral("lblAdmin"), QStringLiteral("Admin"), frmLegend);
    row->addWidget(lblChatAvailable);
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

QAction* frmTLView::ToolbarButton(int index) const {
    const auto actions = ToolbarTop->actions();
    return index >= 1 && index <= actions.size() ? actions[index - 1] : nullptr;
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

QString frmTLView::chatStatusText() const {
    const auto& settings = TLMain().Settings();
    if (!Socket)
        return QStringLiteral("Chat: Offline");
    if (settings.ChatConnected)
        return QStringLiteral("Chat: Online");
    if (tmrChatReconnect->isActive() || settings.ChatConnecting)
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
    if (n == 0) {
        button->setText(QStringLiteral("My Notes"));
        button->setProperty("ImageIndex", 4);
    } else {
        button->setText(n < 10 ? QStringLiteral("Notes (%1)").arg(n)
                               : QStringLiteral("(%1)").arg(n));
        button->setProperty("ImageIndex", 9);
    }
}

// Closing isn't quitting: a signed-in user is told where the program went.
void frmTLView::closeEvent(QCloseEvent* event) {
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
