// What the user does to the people on the board: status changes, friends, the tool tip, the
// pop-up menu and the web administration.
#include "base/MsgBox.h"
#include "base/Screen.h"
#include "base/TLError.h"
#include "base/Variants.h"
#include "board/frmTLView.h"
#include "directory/DirectoryLoaders.h"
#include "directory/StatusNumbers.h"
#include "directory/TLStatusRow.h"
#include "notes/frmTLContactDetails.h"
#include "notes/frmTLLeaveNote.h"
#include "shell/TLMain.h"
#include "shell/WebWindow.h"
#include "shell/modTLMain.h"
#include "status/frmTLStatus.h"

namespace {

constexpr std::int32_t kChangeOthersStatus = 10000016;
constexpr int kSignInWaitMs = 15000;

} // namespace

std::shared_ptr<TLStatusRow> frmTLView::RowAtCell(int row, int col) const {
    QString key;
    if (ActiveView == kStandardView)
        key = QString::number(gridStatus->GetRowItemData(row));
    else if (ActiveView == kMiniView)
        key = ContactKeys.At(row, col);
    return GetObjectFromCollection(modTLMain::colContacts(), key);
}

// Someone of the session's organisation with the right to change others, or oneself.
bool frmTLView::MayChangeStatus(TLStatusRow& row) {
    auto& root = TLMain();
    const bool sameOrganization =
        root.ActiveOrganization().OrganizationSys == row.Contact().OrganizationSys;
    const bool mayChangeOthers = root.ActiveUser().CheckSecurity(kChangeOthersStatus, QString());
    return (sameOrganization && mayChangeOthers) ||
           root.ActiveContact().ContactSys == row.Contact().ContactSys;
}

QString frmTLView::ToolTipFor(TLStatusRow& row) {
    QString text = row.Contact().FullName() + QStringLiteral(" Ext: ") + row.Contact().Extension +
                   QStringLiteral(" Status: ") + row.Status().StatusText;
    if (row.Status().StatusSys != kStatusIn)
        text += QStringLiteral(" Returning: ") + row.ReturningDate() + QLatin1Char(' ') +
                row.ReturningTime();
    if (!Variants::Trim(row.Comment).isEmpty())
        text += QStringLiteral(" (") + row.Comment + QLatin1Char(')');
    return text;
}

void frmTLView::gridStatus_DblClick(int col, int row) {
    if (col <= 0 || row <= 0)
        return;
    gridStatus->setCurrentCell(row - 1, col - 1);
    const auto person = RowAtCell(row, col);
    if (!person)
        return;
    // The bare column number: in the mini view this is the hidden column 1, never reached.
    if (col == TLMain().SpreadColumns().MyContactCheck()) {
        gridStatus->Row = row;
        gridStatus->Col = col;
        toggleFriend(*person, row);
        return;
    }
    if (MayChangeStatus(*person))
        openStatusDialog(person);
    else
        MsgBox(QStringLiteral("Sorry, you do not have sufficient rights to change this person's "
                              "status."),
               vb::vbInformation);
}

// The friend box: ticked means a friend, so the click takes the person off the list, and off
// the sheet at once when the sheet is the friends list.
void frmTLView::toggleFriend(TLStatusRow& person, int row) {
    auto& root = TLMain();
    const QString who = QString::number(root.ActiveUser().UserSys()) + QLatin1Char(',') +
                        QString::number(person.Contact().ContactSys);
    QString sql;
    if (gridStatus->Value() == 1) {
        sql = QStringLiteral("EXECUTE tl_MyFriendsRemove ") + who;
        if (ActiveScreen == 1) {
            gridStatus->Row = row;
            gridStatus->Row2 = row;
            gridStatus->Col = -1;
            gridStatus->DeleteRows();
            gridStatus->SetMaxRows(gridStatus->MaxRows() - 1);
        }
    } else {
        sql = QStringLiteral("EXECUTE tl_MyFriendsAdd ") + who;
    }
    root.DataAccess().ExecuteSQLFromWeb(sql);
    ReloadGrid();
}

void frmTLView::openStatusDialog(const std::shared_ptr<TLStatusRow>& row) {
    auto& dialog = Form<frmTLStatus>();
    dialog.StatusRow = row;
    dialog.ShowDialog();
    ReloadGrid();
}

// The menu opens on the name column only: the other columns hold no keys.
void frmTLView::gridStatus_RightClick(int, int col, int row, int mouseX, int mouseY) {
    ContextRow = GetObjectFromCollection(modTLMain::colContacts(), ContactKeys.At(row, col));
    if (!ContextRow)
        return;
    mnuViewContactDetails->setEnabled(true);
    const bool allowed = MayChangeStatus(*ContextRow);
    for (QAction* entry : {mnuStatusIn, mnuStatusOut, mnuStatusUnavailable, mnuStatusOther})
        entry->setEnabled(allowed);
    switch (ContextRow->Status().StatusSys) {
    case kStatusIn:
        mnuStatusIn->setEnabled(false);
        break;
    case kStatusOut:
        mnuStatusOut->setEnabled(false);
        break;
    case kStatusUnavailable:
        mnuStatusUnavailable->setEnabled(false);
        break;
    default:
        break;
    }
    const auto& settings = TLMain().Settings();
    mnuChat->setEnabled(ContextRow->User().ChatStatus() == 1 && settings.ChatConnected &&
                        settings.EnableChat);
    mnuStatusPopUp->popup(QPoint(mouseX, mouseY));
}

void frmTLView::gridStatus_MouseMove(int, int, int x, int y) {
    Guard([&] {
        int col = 0;
        int row = 0;
        gridStatus->GetCellFromScreenCoord(col, row, x, y);
        const auto person = RowAtCell(row, col);
        gridStatus->SetToolTipText(person ? ToolTipFor(*person) : QString());
    });
}

void frmTLView::SetContextStatus(std::int32_t statusSys) {
    if (!ContextRow)
        return;
    TLContact& contact = ContextRow->Contact();
    contact.UpdateContactStatus(contact.ContactSys, statusSys, QString(), QString(), QString());
    ReloadGrid();
    modTLMain::BuildMenuItems();
}

void frmTLView::SetOwnStatus(std::int32_t statusSys) {
    TLContact& self = TLMain().ActiveContact();
    self.UpdateContactStatus(self.ContactSys, statusSys, QString(), QString(), QString());
    ReloadGrid();
    modTLMain::BuildMenuItems();
}

void frmTLView::mnuStatusOther_Click() {
    if (ContextRow)
        openStatusDialog(ContextRow);
}

// The menu adds by the person's user number, unlike the friend box, and doesn't reload.
void frmTLView::mnuAddMyFriends_Click() {
    if (!ContextRow)
        return;
    auto& root = TLMain();
    root.DataAccess().ExecuteSQLFromWeb(
        QStringLiteral("EXECUTE tl_MyFriendsAdd ") + QString::number(root.ActiveUser().UserSys()) +
        QLatin1Char(',') + QString::number(ContextRow->User().UserSys()));
}

// Signs in to the web site in the program's web window, so the administration page that
// follows opens in the same session. False when the web window cannot be opened (the user has
// been told).
bool frmTLView::signInToWebAdministration() {
    auto& web = WebWindow::Instance();
    Screen::SetMousePointer(Screen::vbHourglass);
    if (!web.PostSignIn(TLMain().Settings().WebAddress())) {
        Screen::SetMousePointer(Screen::vbDefault);
        return false;
    }
    web.WaitForLoad(kSignInWaitMs);
    web.Show();
    return true;
}

void frmTLView::lblAdmin_Click() {
    if (!signInToWebAdministration())
        return;
    WebWindow::Instance().Navigate(
        QUrl(TLMain().Settings().WebAddress() + QStringLiteral("/Administrator.asp")), QByteArray(),
        QByteArray());
    Screen::SetMousePointer(Screen::vbDefault);
}

void frmTLView::mnuAdmin_Click() {
    if (!ContextRow)
        return;
    if (!signInToWebAdministration())
        return;
    const TLContact& person = ContextRow->Contact();
    WebWindow::Instance().Navigate(
        QUrl(TLMain().Settings().WebAddress() + QStringLiteral("/Administrator.asp?p=") +
             QString::number(person.ContactSys) + QStringLiteral("&v=") +
             QString::number(person.UserSys) + QStringLiteral("&r=0&visit_num=0&sentby=menu")),
        QByteArray(), QByteArray());
    Screen::SetMousePointer(Screen::vbDefault);
}

void frmTLView::mnuLeaveNote_Click() {
    if (!ContextRow)
        return;
    auto& note = Form<frmTLLeaveNote>();
    note.Contact = ContextRow->Contact();
    note.show();
}

void frmTLView::mnuViewContactDetails_Click() {
    if (!ContextRow)
        return;
    auto& card = Form<frmTLContactDetails>();
    card.Contact = ContextRow->Contact();
    card.show();
}
