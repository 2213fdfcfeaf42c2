#pragma once

#include "ui_frmTLForgotPassword.h"
#include <QDialog>

// Mails a user's sign-in name and password to the address on file, given the last name and
// that address.
class frmTLForgotPassword : public QDialog, public Ui::frmTLForgotPassword {
    Q_OBJECT
public:
    frmTLForgotPassword();

    void cmdSubmit_Click();
    void cmdCancel_Click();

protected:
    void showEvent(QShowEvent* event) override; // each activation starts with empty boxes
    void reject() override;
};
