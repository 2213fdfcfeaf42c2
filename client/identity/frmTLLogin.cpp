#include "identity/frmTLLogin.h"

#include "base/Forms.h"
#include "base/TLError.h"
#include "board/frmTLView.h"
#include "config/frmTLSettings.h"
#include "config/modTLRegistry.h"
#include "identity/frmTLForgotPassword.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "support/modTLErrorManagement.h"
#include <QEvent>
#include <QTimer>

frmTLLogin::frmTLLogin() {
    setupUi(this);
    connect(cmdOK, &QPushButton::clicked, this, &frmTLLogin::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmTLLogin::cmdCancel_Click);
    txtUserName->installEventFilter(this);
    txtPassword->installEventFilter(this);
    lblForgotPassword->installEventFilter(this);
}

void frmTLLogin::Login(bool forceDialog) {
    auto& settings = Form<frmTLSettings>();
    if (!settings.chkAutoLogin->isChecked() || forceDialog) {
        txtUserName->clear();
        txtPassword->clear();
        show();
        raise();
        activateWindow();
        if (TLMain().ActiveUser().ValidUser())
            Form<frmTLView>().show();
        return;
    }
    txtPassword->setText(settings.txtPassword->text());
    txtPassword->setText(TLMain().Functions().EncodeDecode(txtPassword->text()));
    txtUserName->setText(settings.txtUserName->text());
    cmdOK_Click();
}

void frmTLLogin::cmdOK_Click() {
    try {
        if (!TLMain().ActiveUser().Login(txtUserName->text(), txtPassword->text())) {
            selectFocusedText();
            return;
        }
        if (chkRememberLogin->isChecked())
            rememberLogin();
        modTLMain::ManageApplicationSecurity();
        TLMain().DataAccess().ConnectionEnabled = true;
        Unload<frmTLLogin>();
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLLogin::cmdOK_Click"));
    }
}

// The pair becomes the automatic sign-in of this computer, the password enciphered.
void frmTLLogin::rememberLogin() {
    auto& settings = Form<frmTLSettings>();
    settings.txtUserName->setText(txtUserName->text());
    settings.txtPassword->setText(txtPassword->text());
    settings.chkAutoLogin->setChecked(true);
    settings.txtPassword->setText(TLMain().Functions().EncodeDecode(settings.txtPassword->text()));
    modTLRegistry::SaveSettings();
    Unload<frmTLSettings>();
}

void frmTLLogin::cmdCancel_Click() {
    Guard([] { Unload<frmTLLogin>(); });
}

void frmTLLogin::reject() {
    cmdCancel_Click();
}

void frmTLLogin::lblForgotPassword_Click() {
    Form<frmTLForgotPassword>().exec();
}

// The text of the box with the focus is selected whole, for typing over.
void frmTLLogin::selectFocusedText() {
    if (auto* box = qobject_cast<QLineEdit*>(focusWidget()))
        box->selectAll();
}

bool frmTLLogin::eventFilter(QObject* watched, QEvent* event) {
    if (watched == lblForgotPassword && event->type() == QEvent::MouseButtonRelease) {
        lblForgotPassword_Click();
        return true;
    }
    if (event->type() == QEvent::FocusIn)
        if (auto* box = qobject_cast<QLineEdit*>(watched))
            QTimer::singleShot(0, box,
                               &QLineEdit::selectAll); // after the click has placed the caret
    return QDialog::eventFilter(watched, event);
}
