// The board's side of chat: the connection's events, the router that finds the conversation
// of an incoming message, and the ways the user opens one.
#include "base/MsgBox.h"
#include "board/frmTLView.h"
#include "chat/ChatServerAddress.h"
#include "chat/Socket.h"
#include "chat/frmTLChat.h"
#include "directory/TLStatusRow.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"

namespace {

const QString kUnauthorized = QStringLiteral("<error code='401'>Unauthorized</error>");
const QString kLineEnd = QStringLiteral("\r\n");

QString chatDomain() {
    return ChatServerAddress::Parse(TLMain().Settings().ChatServer()).host;
}

} // namespace

::Socket& frmTLView::CreateSocket() {
    auto* socket = new ::Socket(this); // the board owns it; DropSocket lets it go
    connect(socket, &::Socket::Authenticated, this, &frmTLView::Socket_Authenticated);
    connect(socket, &::Socket::Chat, this,
            [this](const QString& fullJID, const QString& unused, const QString& body) {
                Socket_Chat(fullJID, unused, body);
            });
    connect(socket, &::Socket::Error, this, &frmTLView::Socket_Error);
    connect(socket, &::Socket::Presence, this,
            [this](const QString& fullJID, long status, const QString& statusText) {
                Socket_Presence(fullJID, status, statusText);
            });
    connect(socket, &::Socket::XML, this, &frmTLView::Socket_XML);
    Socket = socket;
    return *socket;
}

void frmTLView::DropSocket() {
    if (Socket) {
        Socket->disconnect(this);
        Socket->deleteLater(); // it may be raising the very event that drops it
    }
    Socket = nullptr;
}

void frmTLView::Socket_Authenticated() {
    TLMain().Settings().ChatConnected = true;
}

void frmTLView::Socket_Presence(const QString&, long, const QString&) {}

// A refused sign-in is how a first-time user shows: connect again, registering the account.
void frmTLView::Socket_XML(long, const QString& xTagXML) {
    if (xTagXML.contains(kUnauthorized))
        modTLMain::ChatConnect(true);
}

void frmTLView::Socket_Error(long, const QString& Description) {
    if (Description == QStringLiteral("Error sending message")) {
        MsgBox(QStringLiteral("User is not signed into chat."), vb::vbInformation);
        return;
    }
    if (Description == QStringLiteral("Connection is forcefully rejected")) {
        StatusBarBottom->Panel(QStringLiteral("chatstatus"))
            ->setText(QStringLiteral("Chat: Offline"));
    } else if (Description == QStringLiteral("Not Connected")) {
        MsgBox(QStringLiteral("Sorry, you are not currently connected to the Tavlo Chat Server."),
               vb::vbInformation);
    }
    modTLMain::ChatDisable();
}

// The conversation is the sender's full address: another resource of the same person gets a
// window of its own, and a closed window (empty Tag) never matches again.
void frmTLView::Socket_Chat(const QString& fullJID, const QString&, const QString& Body) {
    const qsizetype at = fullJID.indexOf(QLatin1Char('@'));
    const QString name = at >= 0 ? fullJID.left(at) : fullJID;
    const QString line = QLatin1Char('<') + name + QStringLiteral("> ") + Body;
    for (const auto& window : chats) {
        if (window && window->Tag() == fullJID) {
            window->ShowLog(frmTLChat::Text(window->txtMessage) + kLineEnd + line);
            window->Flash();
            return;
        }
    }
    auto& window = frmTLChat::Create(fullJID, QStringLiteral("Chat with ") + name);
    window.ShowLog(line);
    window.show();
    chats.append(&window);
    window.Flash();
}

void frmTLView::Chat(const QString& strTargetUser) {
    const QString jid = strTargetUser + QLatin1Char('@') + chatDomain() + QStringLiteral("/Tavlo");
    for (const auto& window : chats) {
        if (window && window->Tag() == jid) {
            window->show();
            return;
        }
    }
    auto& window = frmTLChat::Create(jid, QStringLiteral("Chat with ") + strTargetUser);
    window.show();
    chats.append(&window);
}

// A click on the chat panel is the user's way to try again.
void frmTLView::StatusBarBottom_PanelClick(const QString& key) {
    auto& root = TLMain();
    if (key == QStringLiteral("chatstatus") && root.Settings().EnableChat &&
        !root.ActiveOrganization().ChatDisabled)
        modTLMain::ChatConnect(false);
}

void frmTLView::mnuChat_Click() {
    auto& settings = TLMain().Settings();
    if (ContextRow && settings.ChatConnected && settings.NetworkConnected())
        Chat(ContextRow->User().UserName());
}
