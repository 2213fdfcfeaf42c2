// The chat connection's life: connect, and the two ways of dropping it.
#include "shell/modTLMain.h"

#include "base/Forms.h"
#include "board/frmTLView.h"
#include "chat/ChatServerAddress.h"
#include "chat/Socket.h"
#include "shell/TLMain.h"
#include "shell/frmTLMain.h"
#include "support/modTLErrorManagement.h"
#include <QCoreApplication>

namespace {

// Every user signs in to the chat server with the same password; the accounts exist only so
// that colleagues can be addressed.
const QString kChatPassword = QStringLiteral("mirowelkata");
const QString kChatResource = QStringLiteral("Tavlo");
// Turns of the event loop that connecting waits, whatever arrives meanwhile.
constexpr int kConnectPumpTurns = 10000;

void sendChatState(bool online) {
    auto& root = TLMain();
    root.DataAccess().ExecuteSQLFromWeb(
        QStringLiteral("EXEC tl_UpdateChatStatus ") +
            QString::number(root.ActiveUser().ContactSys()) +
            (online ? QStringLiteral(", 1") : QStringLiteral(", 0")),
        false);
}

// Dropping the connection object is what ends the connection. Leave Note goes off with it and
// Send Instant Message stays as it was.
void dropChat(const QString& place) {
    try {
        auto& root = TLMain();
        sendChatState(false);
        Form<frmTLView>().DropSocket();
        root.Settings().ChatConnected = false;
        root.Settings().ChatConnecting = false;
        Form<frmTLView>()
            .StatusBarBottom->Panel(QStringLiteral("chatstatus"))
            ->setText(QStringLiteral("Chat: Offline"));
        Form<frmTLView>().mnuChat->setEnabled(false);
        Form<frmTLMain>().mnuLeaveMessage->setEnabled(false);
    } catch (...) {
        modTLErrorManagement::ReportTrapped(place);
    }
}

} // namespace

namespace modTLMain {

// The steps after the wait run whatever happened during it: an error that dropped the
// connection still ends here with "online" until the next status bar update and poll.
void ChatConnect(bool blnNewAccount) {
    try {
        auto& root = TLMain();
        auto& settings = root.Settings();
        if (root.ActiveOrganization().ChatDisabled || !settings.EnableChat) {
            ChatDisable();
            return;
        }
        if (!Form<frmTLView>().Socket)
            Form<frmTLView>().CreateSocket();
        const auto server = ChatServerAddress::Parse(settings.ChatServer());
        Form<frmTLView>().Socket->Connect(server.host, server.port, root.ActiveUser().UserName(),
                                          kChatPassword, kChatResource, 1, 2, blnNewAccount);
        settings.ChatConnected = true;
        for (int turn = 0; turn < kConnectPumpTurns; ++turn)
            QCoreApplication::processEvents();
        Form<frmTLView>().chats.clear();
        sendChatState(true);
        settings.ChatConnecting = false;
        Form<frmTLView>().mnuChat->setEnabled(true);
        Form<frmTLMain>().mnuSendInstantMessage->setEnabled(true);
        Form<frmTLView>()
            .StatusBarBottom->Panel(QStringLiteral("chatstatus"))
            ->setText(QStringLiteral("Chat: Online"));
        Form<frmTLMain>().tmrChatReconnect->stop();
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("modTLMain:ChatConnectError"));
    }
}

void ChatDisConnect() {
    dropChat(QStringLiteral("ModTLMain:ChatDisConnectError"));
}

void ChatDisable() {
    dropChat(QStringLiteral("modTLMain:ChatDisable"));
}

} // namespace modTLMain
