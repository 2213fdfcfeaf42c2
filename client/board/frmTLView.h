#pragma once

#include "base/Forms.h"
#include "board/ClickLabel.h"
#include "board/ContactKeyTable.h"
#include "board/ExplorerBar.h"
#include "board/KeyedStatusBar.h"
#include "board/KeyedTabBar.h"
#include "board/LegendCircle.h"
#include "board/SpreadGrid.h"
#include "chat/Socket.h"
#include <QAction>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QToolBar>
#include <array>
#include <cstdint>
#include <memory>

class TLStatusRow;
class frmTLChat;

// The board: the people of the organisation, a group or the friends list, in a standard sheet
// (one person a row) or a mini sheet (names only, coloured by status), with the toolbar, the
// tabs, the search pane, the legend and the status bar around it. Closing it unloads it (the
// next show makes a new one); minimizing hides it to the tray.
class frmTLView : public QMainWindow, public UnloadAware {
    Q_OBJECT
public:
    static constexpr std::int32_t kStandardView = 1;
    static constexpr std::int32_t kMiniView = 2;

    frmTLView();
    void Form_Load();
    void Form_Unload() override {}

    std::int32_t ActiveView = kStandardView;
    std::int32_t ActiveScreen = 0;           // 0 organisation or group, 1 friends, 2 companies
    std::int32_t lngRefreshTimerSeconds = 0; // seconds since the last load
    ContactKeyTable ContactKeys;             // the person's key for each occupied cell
    std::shared_ptr<TLStatusRow> ContextRow; // the person of the last right click
    bool SearchVisible = false;
    QString SearchPanelMode;
    QString SearchPanelPrevious;
    QPointer<::Socket> Socket;        // the chat connection, when one is open
    QList<QPointer<frmTLChat>> chats; // the conversations of this connection, oldest first

    QToolBar* ToolbarTop;
    QWidget* fmeMain;
    QWidget* fmeSearch;
    KeyedTabBar* TabGroups;
    KeyedTabBar* TabCategories;
    SpreadGrid* gridStatus;
    ExplorerBar* barSearch;
    QLineEdit* txtName;
    QLineEdit* txtExtension;
    QLineEdit* txtOrganization;
    QWidget* pnlAdvanced;
    QWidget* pnlAction;
    std::array<QPushButton*, 2> cmdAction{};
    KeyedStatusBar* StatusBarBottom;
    QFrame* frmLegend;
    LegendCircle* StatusInCircle;
    LegendCircle* StatusOutCircle;
    LegendCircle* StatusUnavailableCircle;
    QLabel* lblStatusIn;
    QLabel* lblStatusOut;
    QLabel* lblStatusUnavailable;
    ClickLabel* lblStatusTransIn;
    ClickLabel* lblStatusTransOut;
    ClickLabel* lblStatusTransUnavailable;
    QLabel* lblChatAvailable;
    ClickLabel* lblSupport;
    ClickLabel* lblAdmin;
    QMenu* mnuStatusPopUp;
    QAction* mnuStatusIn;
    QAction* mnuStatusOut;
    QAction* mnuStatusUnavailable;
    QAction* mnuStatusOther;
    QAction* mnuViewContactDetails;
    QAction* mnuLeaveNote;
    QAction* mnuChat;
    QAction* mnuAddMyFriends;
    QAction* mnuAdmin;
    QTimer* tmrRefresh;

    // Loading and layout.
    void FormatTabs();
    void FormatGridColumns(bool blnDontRedraw);
    void FormatGridSize(bool blnDontRedraw);
    void FormatFormSize();
    // Fills the sheet with one answer of the server: the list of ActiveScreen, or the answer
    // to strSentSQL when that isn't empty. 0 means "not given" for the numbers.
    void LoadGrid(std::int32_t lngUserSys, std::int32_t lngGroupSys,
                  std::int32_t lngOrganizationSys, std::int32_t lngContactSys,
                  const QString& strSentSQL);
    // The one way the controls reload: the active user, group and organisation.
    void ReloadGrid();
    // The statement of a list: 0 the organisation or a group, 1 the friends, 2 the companies.
    static QString ListStatement(std::int32_t activeScreen, std::int32_t userSys,
                                 std::int32_t groupSys, std::int32_t organizationSys,
                                 std::int32_t contactSys, std::int32_t locationSys,
                                 std::int32_t friendsOrganizationSys);

    // Status bar, legend, notes button.
    void UpdateStatusBar();
    void LoadLegendColors();
    void UpdateNoteCount();
    QAction* ToolbarButton(int index) const; // 1-based

    // Interaction.
    // Whether the signed-in user may change the person's status.
    bool MayChangeStatus(TLStatusRow& row);
    // The grid's tool tip for a person.
    static QString ToolTipFor(TLStatusRow& row);
    // The person a cell shows, found by the road of the active view; null for none.
    std::shared_ptr<TLStatusRow> RowAtCell(int row, int col) const;

    // Search.
    void BuildSearchPanel();
    // A search box's text without the user's wildcards: "%" gone, trimmed, then "*" gone.
    static QString CleanSearchText(const QString& text);

    // Event handlers, callable by tests as the user's actions.
    void TabCategories_Click();
    void TabGroups_Click();
    void ToolbarTop_ButtonClick(int index);
    void tmrRefresh_Timer();
    void gridStatus_DblClick(int col, int row);
    void gridStatus_RightClick(int clickType, int col, int row, int mouseX, int mouseY);
    void gridStatus_MouseMove(int button, int shift, int x, int y);
    void cmdAction_Click(int index);
    void SetOwnStatus(std::int32_t statusSys);
    void SetContextStatus(std::int32_t statusSys);
    void mnuStatusOther_Click();
    void mnuAddMyFriends_Click();
    void lblAdmin_Click();
    void mnuAdmin_Click();

    // Chat: the connection's events and the conversations.
    // Makes the connection object and routes its events here.
    ::Socket& CreateSocket();
    // Drops the connection object; nothing it says afterwards reaches the program.
    void DropSocket();
    // Opens, or shows, the conversation with a user name.
    void Chat(const QString& strTargetUser);
    void Socket_Authenticated();
    void Socket_Chat(const QString& fullJID, const QString& unused, const QString& Body);
    void Socket_Error(long Number, const QString& Description);
    void Socket_Presence(const QString& fullJID, long Status, const QString& StatusText);
    void Socket_XML(long dataDirection, const QString& xTagXML);
    void StatusBarBottom_PanelClick(const QString& key);
    void mnuChat_Click();
    void mnuLeaveNote_Click();
    void mnuViewContactDetails_Click();

    // The help page beside the program.
    static QString HelpFilePath();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildToolbar();
    void buildFrames(QWidget* central);
    void buildLegend(QWidget* parent);
    void buildSearchControls();
    void buildStatusBar();
    void buildPopupMenu();
    void connectHandlers();
    QString chatStatusText() const;
    void layoutStandardView();
    void layoutMiniView();
    void toggleFriend(TLStatusRow& person, int row);
    void openStatusDialog(const std::shared_ptr<TLStatusRow>& row);
    bool signInToWebAdministration();
    void searchCompanies(const QString& organization);

    QWidget* m_central = nullptr;
};
