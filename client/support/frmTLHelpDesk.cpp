#include "support/frmTLHelpDesk.h"

#include "config/MakerAddresses.h"
#include "shell/TLMain.h"
#include <QCloseEvent>

namespace {
const QString kLineEnd = QStringLiteral("\r\n");
const std::array<QString, 6> kPrefixes = {
    QStringLiteral("Bug: "),        QStringLiteral("Annoyance: "), QStringLiteral("Question: "),
    QStringLiteral("Suggestion: "), QStringLiteral("Comment: "),   QStringLiteral("Sales: ")};
} // namespace

frmTLHelpDesk::frmTLHelpDesk() {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLHelpDesk"));
    optPriority = {optPriority_0, optPriority_1, optPriority_2,
                   optPriority_3, optPriority_4, optPriority_5};
    connect(cmdOK, &QPushButton::clicked, this, &frmTLHelpDesk::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmTLHelpDesk::cmdCancel_Click);
}

void frmTLHelpDesk::showEvent(QShowEvent* event) {
    txtMessage->setFocus();
    QDialog::showEvent(event);
}

// The first priority set gives the prefix; none set, none. Sent without a word to the user.
void frmTLHelpDesk::cmdOK_Click() {
    auto& root = TLMain();
    auto& data = root.DataAccess();
    QString prefix;
    for (size_t i = 0; i < optPriority.size() && prefix.isEmpty(); ++i)
        if (optPriority[i]->isChecked())
            prefix = kPrefixes[i];
    const auto& contact = root.ActiveContact();
    const QString body =
        kLineEnd + kLineEnd + QStringLiteral("Name - ") + contact.FullName() + kLineEnd +
        QStringLiteral("Company - ") + root.ActiveOrganization().OrganizationName + kLineEnd +
        QStringLiteral("E-Mail Address - ") + contact.EmailAddress + kLineEnd +
        QStringLiteral("Phone Number - ") + contact.PhoneNumber + kLineEnd + kLineEnd +
        QStringLiteral("Has submitted a help desk request with the following "
                       "information:") +
        kLineEnd + kLineEnd + txtMessage->toPlainText();
    const QString support = data.DBIn(MakerAddresses::SupportMail, false, false);
    data.ExecuteSQLFromWeb(
        QStringLiteral("EXEC tl_SendEmail ") + support + QLatin1Char(',') +
            data.DBIn(prefix + QStringLiteral("Tavlo Help Desk Notification"), false, false) +
            QLatin1Char(',') + data.DBIn(body, false, false) + QLatin1Char(',') + support +
            QLatin1Char(',') + support,
        false);
    Unload<frmTLHelpDesk>();
}

void frmTLHelpDesk::cmdCancel_Click() {
    Unload<frmTLHelpDesk>();
}

void frmTLHelpDesk::closeEvent(QCloseEvent* event) {
    event->accept();
    Unload<frmTLHelpDesk>();
}
