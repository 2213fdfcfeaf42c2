// The board's sheet: columns, sizes, and the load of one list into the standard or mini view.
#include "base/MsgBox.h"
#include "base/Screen.h"
#include "base/TLError.h"
#include "base/Twips.h"
#include "board/frmTLView.h"
#include "directory/TLStatusRow.h"
#include "shell/StartTrace.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "support/modTLErrorManagement.h"
#include <QLayout>
#include <QScrollBar>
#include <QStyle>
#include <cmath>

namespace {

struct Column {
    std::int32_t (TLSpreadColumns::*number)() const;
    const char* caption;
    int twips;
};

// Header captions in the order they are written, and the fixed widths in the order they are set.
const Column kHeaders[] = {{&TLSpreadColumns::Comment, "Comment", 0},
                           {&TLSpreadColumns::ContactName, "Name", 0},
                           {&TLSpreadColumns::Ext, "Ext", 0},
                           {&TLSpreadColumns::MyContactCheck, "My", 0},
                           {&TLSpreadColumns::ReturningDate, "Returning", 0},
                           {&TLSpreadColumns::ReturningTime, "Time", 0},
                           {&TLSpreadColumns::Status, "Status", 0}};
const Column kFixedWidths[] = {
    {&TLSpreadColumns::Status, "", 1200},        {&TLSpreadColumns::ContactName, "", 2500},
    {&TLSpreadColumns::Ext, "", 1000},           {&TLSpreadColumns::MyContactCheck, "", 400},
    {&TLSpreadColumns::ReturningDate, "", 1500}, {&TLSpreadColumns::ReturningTime, "", 1000}};
constexpr int kFixedWidthsTotal = 7600;
constexpr int kMiniColumnTwips = 2000;

QString numberOrNull(std::int32_t value) {
    return value == 0 ? QStringLiteral("NULL") : QString::number(value);
}

QString nameWithChatMark(TLStatusRow& row) {
    QString name = row.Contact().LastNameFirstName();
    if (row.User().ChatStatus() == 1)
        name += QStringLiteral(" *");
    return name;
}

} // namespace

void frmTLView::FormatGridColumns(bool blnDontRedraw) {
    const TLSpreadColumns& columns = TLMain().SpreadColumns();
    gridStatus->SetColsFrozen(2);
    gridStatus->SetMaxCols(columns.MaxColumns());
    gridStatus->Row = 0;
    for (const Column& c : kHeaders) {
        gridStatus->Col = (columns.*c.number)();
        gridStatus->SetText(QString::fromLatin1(c.caption));
    }
    FormatGridSize(blnDontRedraw);
    gridStatus->Col = columns.MyContactCheck();
    gridStatus->Row = -1;
    gridStatus->SetTypeCheckCenter(true);
    gridStatus->SetCellType(SpreadGrid::CellKind::CheckBox);
}

// In the standard view the comment takes whatever width the six fixed columns leave.
void frmTLView::FormatGridSize(bool blnDontRedraw) {
    if (!blnDontRedraw)
        gridStatus->SetReDraw(false);
    if (ActiveView == kStandardView) {
        const TLSpreadColumns& columns = TLMain().SpreadColumns();
        for (const Column& c : kFixedWidths)
            gridStatus->SetColWidth((columns.*c.number)(), c.twips);
        // The grid's inside, less room for a vertical scroll bar, so that the rows never need
        // a horizontal one; the fixed columns are taken as they came out in whole pixels.
        const int inner = gridStatus->width() - 2 * gridStatus->frameWidth() -
                          gridStatus->verticalScrollBar()->sizeHint().width();
        int fixed = 0;
        for (const Column& c : kFixedWidths)
            fixed += gridStatus->columnWidth((columns.*c.number)() - 1);
        const int rounding = Twips::FromPixelsX(fixed, gridStatus) - kFixedWidthsTotal;
        gridStatus->SetColWidth(columns.Comment(), Twips::FromPixelsX(inner, gridStatus) -
                                                       kFixedWidthsTotal - rounding);
    }
    if (!blnDontRedraw)
        gridStatus->SetReDraw(true);
}

// Frames, tabs and grid follow the window's size; the legend takes the band below them and the
// search pane, when open, the strip on the right. A failing step leaves the others to run.
void frmTLView::FormatFormSize() {
    Guard([&] {
        auto px = [this](int twips) { return Twips::ToPixelsX(twips, this); };
        auto py = [this](int twips) { return Twips::ToPixelsY(twips, this); };
        const int searchWidth = SearchVisible ? px(3800) : 0;
        const int height = m_central->height() - py(500);
        const int width = m_central->width();
        fmeMain->setGeometry(0, 0, std::max(width - searchWidth, 0), std::max(height, 0));
        fmeSearch->setVisible(SearchVisible);
        fmeSearch->setGeometry(fmeMain->width(), py(85), searchWidth, std::max(height - py(90), 0));
        barSearch->setGeometry(0, 0, fmeSearch->width(), fmeSearch->height());
        frmLegend->setGeometry(0, height, width, py(500));

        const int categories = TabCategories->sizeHint().width();
        TabCategories->setGeometry(0, py(100), categories,
                                   std::max(fmeMain->height() - py(200), 0));
        const int groupsLeft = std::max(px(330), categories);
        TabGroups->setGeometry(groupsLeft, py(100), std::max(fmeMain->width() - px(450), 0),
                               TabGroups->sizeHint().height());
        const int gridLeft = std::max(px(400), categories + 2);
        const int gridTop = std::max(py(500), py(100) + TabGroups->sizeHint().height());
        gridStatus->setGeometry(gridLeft, gridTop, std::max(fmeMain->width() - px(700), 0),
                                std::max(fmeMain->height() - py(650), 0));
    });
    Guard([&] { FormatGridSize(false); });
    Guard([&] {
        auto px = [this](int twips) { return Twips::ToPixelsX(twips, this); };
        int buttons = 0;
        QWidget* exitSpace = nullptr;
        for (QAction* action : ToolbarTop->actions()) {
            QWidget* button = ToolbarTop->widgetForAction(action);
            if (!button)
                continue;
            if (action->property("Key").toString() == QStringLiteral("ExitSpace"))
                exitSpace = button;
            else
                buttons += button->width();
        }
        if (exitSpace) {
            // The toolbar's own margins and gaps come off too, so "Exit" stays on the bar.
            const auto* bar = ToolbarTop->layout();
            const QMargins margins = bar->contentsMargins();
            const int gaps = bar->spacing() * int(ToolbarTop->actions().size()) + margins.left() +
                             margins.right() +
                             style()->pixelMetric(QStyle::PM_ToolBarExtensionExtent);
            exitSpace->setFixedWidth(std::max(ToolbarTop->width() - buttons - px(200) - gaps, 0));
        }
    });
}

QString frmTLView::ListStatement(std::int32_t activeScreen, std::int32_t userSys,
                                 std::int32_t groupSys, std::int32_t organizationSys,
                                 std::int32_t contactSys, std::int32_t locationSys,
                                 std::int32_t friendsOrganizationSys) {
    switch (activeScreen) {
    case 0:
        return QStringLiteral("EXEC tl_GetUserStatuses ") + numberOrNull(groupSys) +
               QLatin1Char(',') + numberOrNull(contactSys) + QLatin1Char(',') +
               numberOrNull(organizationSys) + QLatin1Char(',') + numberOrNull(userSys) +
               QLatin1Char(',') +
               (locationSys == 0 || locationSys == -1 ? QStringLiteral("NULL")
                                                      : QString::number(locationSys));
    case 1:
        return QStringLiteral("EXEC tl_GetMyFriendsList ") + QString::number(userSys) +
               QLatin1Char(',') + QString::number(friendsOrganizationSys);
    case 2:
        return QStringLiteral("EXEC tl_GetCompanyList ") + QString::number(userSys);
    default:
        return {};
    }
}

void frmTLView::ReloadGrid() {
    auto& root = TLMain();
    LoadGrid(root.ActiveUser().UserSys(), root.ActiveGroup().GroupSys,
             root.ActiveOrganization().OrganizationSys, 0, QString());
}

void frmTLView::LoadGrid(std::int32_t lngUserSys, std::int32_t lngGroupSys,
                         std::int32_t lngOrganizationSys, std::int32_t lngContactSys,
                         const QString& strSentSQL) {
    try {
        // The rows reach the view in one change, when the load ends (or fails).
        SpreadGrid::Batch batch(*gridStatus);
        auto& root = TLMain();
        auto& data = root.DataAccess();
        lngRefreshTimerSeconds = 0;
        Screen::SetMousePointer(Screen::vbHourglass);
        QString sql = ListStatement(ActiveScreen, lngUserSys, lngGroupSys, lngOrganizationSys,
                                    lngContactSys, root.Settings().OrganizationLocationSys(),
                                    root.ActiveContact().OrganizationSys);
        modTLMain::ClearContacts();
        gridStatus->SetReDraw(false);
        gridStatus->SetMaxRows(0);
        gridStatus->SetGridShowHoriz(true);
        gridStatus->SetGridShowVert(false);
        FormatGridColumns(true);
        if (!strSentSQL.isEmpty())
            sql = strSentSQL;
        auto rs = data.LoadADOFromWeb(sql);
        if (!rs)
            Raise(err::NoObject);
        auto& contacts = modTLMain::colContacts();
        for (; !rs->Eof(); rs->MoveNext()) {
            auto row = std::make_shared<TLStatusRow>();
            row->Contact().FillObjectWithRecordSet(rs.get());
            row->Status().FillObjectWithRecordSet(rs.get());
            row->User().FillObjectWithRecordSet(rs.get());
            row->Comment = data.DBOStr(rs->Fields(QStringLiteral("comment")).Value());
            row->SetReturningText(data.DBOStr(rs->Fields(QStringLiteral("returningtext")).Value()));
            row->MyContact = data.DBOLong(rs->Fields(QStringLiteral("myfriend")).Value()) != 0;
            contacts.Add(row, row->Key());
        }
        if (ActiveView == kStandardView)
            layoutStandardView();
        else if (ActiveView == kMiniView)
            layoutMiniView();
        gridStatus->SetReDraw(false);
        Screen::SetMousePointer(Screen::vbDefault);
        TraceStart("board");
    } catch (...) {
        const Trapped failure = CurrentError();
        if (failure.number == err::DuplicateKey)
            MsgBox(QStringLiteral("Sorry, your request was not processed properly, please try "
                                  "again."),
                   vb::vbInformation);
        else if (failure.number != err::NoObject)
            modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLView:LoadGrid"));
    }
}

void frmTLView::layoutStandardView() {
    const TLSpreadColumns& columns = TLMain().SpreadColumns();
    auto& contacts = modTLMain::colContacts();
    auto& functions = TLMain().Functions();
    SpreadGrid& grid = *gridStatus;
    grid.SetMaxCols(columns.MaxColumns());
    setWindowTitle(QStringLiteral("Tavlo Standard View"));
    grid.Row = 0;
    grid.Col = -1;
    grid.SetRowHidden(false);
    grid.Row = -1;
    grid.Col = 0;
    grid.SetRowHidden(false);
    ContactKeys.Redim(static_cast<int>(contacts.Count()), grid.MaxCols());
    int i = 0;
    for (const auto& entry : contacts) {
        TLStatusRow& person = *entry.item;
        ++i;
        grid.SetMaxRows(i);
        grid.Row = i;
        grid.Col = columns.Status();
        grid.SetBackColor(functions.GetBackColorValue(person.Status().ColorCode));
        grid.SetLock(true);
        grid.SetRowItemData(i, person.KeyValue());
        ContactKeys.Set(i, columns.ContactName(), person.Key());
        grid.Col = 0;
        grid.SetColHidden(true);
        auto write = [&](std::int32_t col, auto&& fill) {
            grid.Col = col;
            fill();
            grid.SetColHidden(false);
        };
        write(columns.MyContactCheck(), [&] { grid.SetValue(person.MyContact ? 1 : 0); });
        write(columns.ContactName(), [&] { grid.SetText(nameWithChatMark(person)); });
        write(columns.Comment(), [&] { grid.SetText(person.Comment); });
        write(columns.Ext(), [&] { grid.SetText(person.Contact().Extension); });
        write(columns.ReturningDate(), [&] { grid.SetText(person.ReturningDate()); });
        write(columns.ReturningTime(), [&] { grid.SetText(person.ReturningTime()); });
        write(columns.Status(), [&] { grid.SetText(person.Status().StatusText); });
        // A row counter compared with a column number: from the second person on, the name
        // column is centred; a board of one keeps the default alignment.
        if (i == columns.ContactName()) {
            grid.Col = i;
            grid.Row = -1;
            grid.SetTypeHAlign(SpreadGrid::kAlignCenter);
        }
    }
}

// Names only, MaxColumns across, left to right and top to bottom; columns 0 and 1 stay hidden.
void frmTLView::layoutMiniView() {
    auto& root = TLMain();
    auto& contacts = modTLMain::colContacts();
    SpreadGrid& grid = *gridStatus;
    const std::int32_t across = root.Settings().MaxColumns();
    setWindowTitle(QStringLiteral("Tavlo Mini View"));
    grid.SetMaxCols(across + 2);
    for (int c = 0; c <= grid.MaxCols(); ++c) {
        grid.Row = -1;
        grid.Col = c;
        grid.SetColHidden(true);
    }
    const double perRow = double(contacts.Count()) / double(grid.MaxCols() - 2) + 1.0;
    ContactKeys.Redim(static_cast<int>(std::nearbyint(perRow)), grid.MaxCols());
    grid.Row = 0;
    grid.Col = -1;
    grid.SetRowHidden(true);
    int gridRow = 1;
    int gridCol = 2;
    int i = 0;
    for (const auto& entry : contacts) {
        TLStatusRow& person = *entry.item;
        ++i;
        grid.SetMaxRows(gridRow);
        grid.Row = gridRow;
        grid.Col = gridCol;
        grid.SetBackColor(root.Functions().GetBackColorValue(person.Status().ColorCode));
        grid.SetLock(true);
        grid.SetText(nameWithChatMark(person));
        grid.SetRowItemData(gridRow, person.KeyValue());
        ContactKeys.Set(gridRow, gridCol, person.Key());
        grid.SetToolTipText(
            QString(person.Contact().ToolTip).replace(QStringLiteral("<BR>"), QStringLiteral(" ")));
        grid.SetColHidden(false);
        grid.SetColWidth(gridCol, kMiniColumnTwips);
        ++gridCol;
        if (gridCol > across + 1) {
            gridCol = 2;
            ++gridRow;
            grid.SetMaxRows(gridRow);
        }
        grid.Col = gridCol;
        grid.Row = i;
        grid.SetTypeHAlign(SpreadGrid::kAlignLeft);
    }
}
