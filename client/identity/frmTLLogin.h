#pragma once

#include "ui_frmTLLogin.h"
#include <QDialog>

// The sign-in dialog, "Tavlo Login". With the stored automatic sign-in it signs in without
// being shown.
class frmTLLogin : public QDialog, public Ui::frmTLLogin {
    Q_OBJECT
public:
    frmTLLogin();

    // Starts a sign-in: shows the dialog (always when forceDialog), or signs in at once with
    // the remembered name and password.
    void Login(bool forceDialog);

    void cmdOK_Click();
    void cmdCancel_Click();
    void lblForgotPassword_Click();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override; // Escape and the close box: as Cancel

private:
    void rememberLogin();
    void selectFocusedText();
};
