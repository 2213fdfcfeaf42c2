// The tray form's background timers: the network watch, the status poll with the note count,
// and the idle watch.
#include "shell/frmTLMain.h"

#include "base/Forms.h"
#include "base/TLError.h"
#include "board/frmTLView.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "shell/modTLMouseActivity.h"
#include "support/modTLErrorManagement.h"
#include <QCoreApplication>

// A lost network ends a chat that is online; nothing else happens here. Going online again is
// the poll's work.
void frmTLMain::tmrCheckNetwork_Timer() {
    try {
        auto& settings = TLMain().Settings();
        if (settings.NetworkConnected())
            return;
        auto* board = LoadedForm<frmTLView>(); // an unloaded board has no connection
        if (settings.EnableChat && settings.ChatConnected && board && board->Socket)
            modTLMain::ChatDisConnect();
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLMain:tmrCheckNetworkError"));
    }
}

namespace {

// The server's status and comment for the signed-in contact, over the local ones. No answer
// at all raises "no object"; an empty answer fails at the comment's read.
void pollOwnStatus() {
    auto& root = TLMain();
    auto& data = root.DataAccess();
    Form<frmTLMain>().UpdateNoteCountFromDatabase();
    const auto rs = data.LoadADOFromWeb(QStringLiteral("EXEC tl_GetContactStatus ") +
                                        QString::number(root.ActiveContact().ContactSys));
    root.ActiveStatus().FillObjectWithRecordSet(rs.get());
    if (!rs)
        Raise(err::NoObject);
    root.ActiveStatusRow().Comment = data.DBOStr(rs->Fields(QStringLiteral("comment")).Value());
    Form<frmTLView>().UpdateStatusBar();
}

// Chat goes online again here after a loss, and the chat state goes to the server at every
// tick, as a heartbeat.
void sendChatState() {
    auto& root = TLMain();
    auto& settings = root.Settings();
    if (settings.EnableChat && !settings.ChatConnecting && !settings.ChatConnected) {
        settings.ChatConnected = false;
        modTLMain::ChatConnect(false);
    }
    const bool online = settings.ChatConnected && !settings.ChatConnecting;
    root.DataAccess().ExecuteSQLFromWeb(
        QStringLiteral("EXEC tl_UpdateChatStatus ") +
            QString::number(root.ActiveUser().ContactSys()) +
            (online ? QStringLiteral(", 1") : QStringLiteral(", 0")),
        false);
}

} // namespace

void frmTLMain::tmrUpdateStatus_Timer() {
    try {
        auto& root = TLMain();
        if (!root.ActiveUser().ValidUser() || !root.Settings().NetworkConnected())
            return;
        const auto& contact = root.ActiveContact();
        if (contact.UserSys != 0 && contact.ContactSys != 0)
            pollOwnStatus();
        modTLMain::BuildMenuItems();
        sendChatState();
    } catch (...) {
        if (CurrentError().number == err::NoObject) {
            // The server vanished with the network up: the program ends.
            Unload<frmTLMain>();
            return;
        }
        modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLMain:tmrUpdateStatus"));
    }
}

void frmTLMain::tmrChatReconnect_Timer() {
    try {
        for (int turn = 0; turn < 100000; ++turn)
            QCoreApplication::processEvents();
        modTLMain::ChatConnect(false);
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLMain:tmrChatReconnectError"));
    }
}

void frmTLMain::tmrMouseActivity_Timer() {
    modTLMouseActivity::Tick(tmrMouseActivity->interval());
}

void frmTLMain::UpdateNoteCountFromDatabase() {
    auto& root = TLMain();
    Guard([&] {
        auto& contact = root.ActiveContact();
        if (!root.ActiveUser().ValidUser() || !root.Settings().NetworkConnected() ||
            contact.UserSys == 0 || contact.ContactSys == 0)
            return;
        auto& data = root.DataAccess();
        const auto rs = data.LoadADOFromWeb(QStringLiteral("EXEC tl_GetContactNotesUnread  ") +
                                            QString::number(contact.ContactSys));
        if (!rs)
            Raise(err::NoObject);
        contact.NotesUnread =
            rs->Eof() ? 0 : data.DBOLong(rs->Fields(QStringLiteral("NoteCount")).Value());
    });
    Guard([] { Form<frmTLView>().UpdateNoteCount(); });
}
