#pragma once

#include "base/Forms.h"
#include <QAction>
#include <QMenu>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>
#include <vector>

// The hidden form that owns the tray icon, its menu and the background timers. It lives from
// its first touch to the program's end; its unload ends the program.
class frmTLMain : public QWidget, public UnloadAware {
    Q_OBJECT
public:
    frmTLMain();
    ~frmTLMain() override;
    void Form_Load();
    void Form_Unload() override;

    QSystemTrayIcon* trayIcon;
    QMenu* mnuPopupSys;
    QMenu* mnuPopStatusMenu;
    QAction* mnuPopStatus;
    std::vector<QAction*> mnuPopOptions; // one entry for each available status; 0 always there
    QAction* mnuBlankLine0;
    QAction* mnuSendInstantMessage;
    QAction* mnuLeaveMessage;
    QAction* mnuBlankLine1;
    QAction* mnuSignIn;
    QAction* mnuSignInAs;
    QAction* mnuSignOut;
    QAction* mnuBlankLine2;
    QAction* mnuMiniView;
    QAction* mnuStandardView;
    QAction* mnuPopRestore;
    QAction* mnuBlankLine3;
    QAction* mnuPopConfigure;
    QAction* mnuResetConnection;
    QAction* mnuBlankLine4;
    QAction* mnuAboutTavlo;
    QAction* mnuBlankLine5;
    QAction* mnuPopExit;
    QTimer* tmrCheckNetwork;  // each second: a lost network ends chat
    QTimer* tmrUpdateStatus;  // every 30 s: the server's status, notes and chat state
    QTimer* tmrMouseActivity; // each second once started: the idle watch
    QTimer* tmrChatReconnect; // a chat retry that nothing starts

    // Adds status entry `index` (1 and up) to the menu, or takes it away again.
    void LoadOption(std::size_t index);
    void UnloadOption(std::size_t index);

    // The icon's picture and tip, replaced together.
    void ChangeSystemTray(const QString& tip, const QIcon& picture);
    void ChangeToolTip(const QString& tip);
    // The tip and picture index the tray shows now.
    const QString& TrayTip() const { return m_tip; }
    int TrayPictureIndex() const { return m_pictureIndex; }
    void SetTrayPictureIndex(int index) { m_pictureIndex = index; }

    void EnableMenu(bool enable);
    // 1 standard, 2 mini: the board when signed in, else the sign-in.
    void ShowApplicationView(int view);
    void ShowWebBrowser();
    // The count of unread notes from the server, onto the board.
    void UpdateNoteCountFromDatabase();

    void tmrCheckNetwork_Timer();
    // The server is the master: its status and comment overwrite the local ones at each tick.
    // A server that can't be reached during the poll ends the program.
    void tmrUpdateStatus_Timer();
    void tmrMouseActivity_Timer();
    void tmrChatReconnect_Timer();

    void mnuPopOptions_Click(std::size_t index);
    void mnuPopConfigure_Click();
    void mnuPopExit_Click();
    void mnuSendInstantMessage_Click();
    void mnuLeaveMessage_Click();
    void mnuAboutTavlo_Click();
    void mnuSignInAs_Click();
    void mnuSignOut_Click();
    void mnuSignIn_Click();

protected:
    void changeEvent(QEvent* event) override;

private:
    void showContactSelection(int contactFunction);
    QAction* addEntry(const char* name, const QString& caption);
    QAction* addSeparator(const char* name);
    void buildMenu();
    void connectMenu();
    void connectTimers();
    void trayActivated(QSystemTrayIcon::ActivationReason reason);

    QString m_tip;
    int m_pictureIndex = 0;
};
