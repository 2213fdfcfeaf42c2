#pragma once

#include <QMainWindow>
#include <cstdint>

// The board window. The grid, tabs, toolbar and refresh arrive with the board work; the
// refresh countdown is already reset by the settings dialog.
class frmTLView : public QMainWindow {
    Q_OBJECT
public:
    frmTLView();

    std::int32_t lngRefreshTimerSeconds = 0; // seconds since the last load
};
