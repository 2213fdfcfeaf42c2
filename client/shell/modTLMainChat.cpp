#include "shell/modTLMain.h"

#include "base/Forms.h"
#include "board/frmTLView.h"
#include "shell/TLMain.h"
#include "shell/frmTLMain.h"
#include "support/modTLErrorManagement.h"

namespace modTLMain {

// Dropping the connection object is what ends the connection. Leave Note goes off with it and
// Send Instant Message stays as it was.
void ChatDisConnect() {
    try {
        auto& root = TLMain();
        root.DataAccess().ExecuteSQLFromWeb(QStringLiteral("EXEC tl_UpdateChatStatus ") +
                                                QString::number(root.ActiveUser().ContactSys()) +
                                                QStringLiteral(", 0"),
                                            false);
        auto& board = Form<frmTLView>();
        if (board.Socket)
            board.Socket->deleteLater();
        board.Socket = nullptr;
        root.Settings().ChatConnected = false;
        root.Settings().ChatConnecting = false;
        board.StatusBarBottom->Panel(QStringLiteral("chatstatus"))
            ->setText(QStringLiteral("Chat: Offline"));
        board.mnuChat->setEnabled(false);
        Form<frmTLMain>().mnuLeaveMessage->setEnabled(false);
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("ModTLMain:ChatDisConnectError"));
    }
}

} // namespace modTLMain
