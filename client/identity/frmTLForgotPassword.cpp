#include "identity/frmTLForgotPassword.h"

#include "base/Forms.h"
#include "base/MsgBox.h"
#include "config/MakerAddresses.h"
#include "shell/TLMain.h"

frmTLForgotPassword::frmTLForgotPassword() {
    setupUi(this);
    connect(cmdSubmit, &QPushButton::clicked, this, &frmTLForgotPassword::cmdSubmit_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmTLForgotPassword::cmdCancel_Click);
}

void frmTLForgotPassword::showEvent(QShowEvent* event) {
    txtLastName->clear();
    txtEmailAddress->clear();
    txtLastName->setFocus();
    QDialog::showEvent(event);
}

void frmTLForgotPassword::cmdSubmit_Click() {
    auto& data = TLMain().DataAccess();
    const auto rs = data.LoadADOFromWeb(
        QStringLiteral("tl_ForgotPassword ") + data.DBIn(txtEmailAddress->text(), false, false) +
        QLatin1Char(',') + data.DBIn(txtLastName->text(), false, false));
    if (!rs)
        return; // the gateway has told the user
    if (rs->Eof()) {
        MsgBox(QStringLiteral("Sorry, you did not enter a valid Last Name or E-mail address"),
               vb::vbCritical);
        return;
    }
    const QString userName = data.DBOStr(rs->Fields(QStringLiteral("UserName")).Value());
    const QString password = data.DBOStr(rs->Fields(QStringLiteral("Password")).Value());
    const QString to = data.DBOStr(rs->Fields(QStringLiteral("EmailAddress")).Value());
    const QString lineEnd = QStringLiteral("\r\n");
    const QString body =
        QStringLiteral("Below is your Tavlo UserName and Password:") + lineEnd + lineEnd +
        QStringLiteral("UserName - ") + userName + lineEnd + QStringLiteral("Password - ") +
        password + lineEnd + lineEnd +
        QStringLiteral("You may now login to Tavlo by opening the Tavlo Application or by going "
                       "to ") +
        MakerAddresses::WebSite + QStringLiteral(". ");
    const QString from = data.DBIn(MakerAddresses::InfoMail, false, false);
    data.ExecuteSQLFromWeb(
        QStringLiteral("EXEC tl_SendEmail ") + data.DBIn(to, false, false) + QLatin1Char(',') +
            data.DBIn(QStringLiteral("Tavlo Lost Password Request"), false, false) +
            QLatin1Char(',') + data.DBIn(body, false, false) + QLatin1Char(',') + from +
            QLatin1Char(',') + from + QLatin1Char(',') +
            data.DBIn(QStringLiteral(" "), false, false),
        false);
    MsgBox(QStringLiteral("Your password has been sent to your e-mail address."));
    hide();
}

void frmTLForgotPassword::cmdCancel_Click() {
    Unload<frmTLForgotPassword>();
}

void frmTLForgotPassword::reject() {
    cmdCancel_Click();
}
