#pragma once

#include "base/Forms.h"
#include "board/KeyedStatusBar.h"
#include "board/KeyedTabBar.h"
#include "board/LegendCircle.h"
#include <QAction>
#include <QGroupBox>
#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <QToolBar>
#include <cstdint>

// The board window: toolbar, group and view tabs, legend and status bar around the grid.
// Closing it unloads it (the next show makes a new one); minimizing hides it to the tray.
class frmTLView : public QMainWindow, public UnloadAware {
    Q_OBJECT
public:
    frmTLView();

    std::int32_t ActiveView = 1;             // 1 standard, 2 mini
    std::int32_t ActiveScreen = 0;           // 0 organisation or group, 1 friends, 2 companies
    std::int32_t lngRefreshTimerSeconds = 0; // seconds since the last load
    QPointer<QObject> Socket;                // the chat connection, when one is open

    QToolBar* ToolbarTop;
    KeyedTabBar* TabGroups;
    KeyedTabBar* TabCategories;
    KeyedStatusBar* StatusBarBottom;
    QGroupBox* frmLegend;
    LegendCircle* StatusInCircle;
    LegendCircle* StatusOutCircle;
    LegendCircle* StatusUnavailableCircle;
    QLabel* lblStatusIn;
    QLabel* lblStatusOut;
    QLabel* lblStatusUnavailable;
    QLabel* lblChatAvailable;
    QLabel* lblSupport;
    QLabel* lblAdmin;
    QAction* mnuAdmin;
    QTimer* tmrChatReconnect;

    // Both tab rows: "All", the organisation's groups and "My Friends"; "Standard" and "Mini".
    void FormatTabs();
    // Name, status and chat state of the signed-in user in the status bar.
    void UpdateStatusBar();
    // The legend's three circles in the organisation's colours for In, Unavailable and the rest.
    void LoadLegendColors();
    // The notes button shows the count of unread notes.
    void UpdateNoteCount();
    // The toolbar button at a 1-based position.
    QAction* ToolbarButton(int index) const;

    void Form_Unload() override {}

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void buildToolbar();
    void buildLegend(QWidget* parent);
    void buildStatusBar();
    QString chatStatusText() const;
};
