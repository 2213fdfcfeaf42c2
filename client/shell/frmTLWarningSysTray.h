#pragma once

#include "ui_frmTLWarningSysTray.h"
#include <QDialog>

// Tells the user that closing or minimizing the board leaves the program in the tray, until
// the user asks never to be told again.
class frmTLWarningSysTray : public QDialog, public Ui::frmTLWarningSysTray {
    Q_OBJECT
public:
    frmTLWarningSysTray();

    // Shows the form, not modally, unless the user declined it for good.
    static void ShowUnlessDeclined();

    void cmdOk_Click();
};
