#include "notes/frmTLLeaveNote.h"

#include "base/MsgBox.h"
#include "config/MakerAddresses.h"
#include "shell/TLMain.h"
#include "shell/frmTLMain.h"
#include <QCloseEvent>

namespace {
const QString kLineEnd = QStringLiteral("\r\n");
}

frmTLLeaveNote::frmTLLeaveNote() {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLLeaveNote"));
    TLMain().Functions().ShowOnTop(this, true);
    connect(cmdOK, &QPushButton::clicked, this, &frmTLLeaveNote::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmTLLeaveNote::cmdCancel_Click);
}

void frmTLLeaveNote::showEvent(QShowEvent* event) {
    lblLeaveNoteTitle->setText(QStringLiteral("Leave a Note for ") + Contact.FullName());
    txtNoteText->setFocus();
    QDialog::showEvent(event);
}

// No check for empty text: an empty note is stored too, and the box says it was sent.
void frmTLLeaveNote::cmdOK_Click() {
    auto& root = TLMain();
    auto& data = root.DataAccess();
    const QString text = txtNoteText->toPlainText();
    data.ExecuteSQLFromWeb(QStringLiteral("EXEC tl_AddContactNote ") +
                               QString::number(Contact.ContactSys) + QLatin1Char(',') +
                               data.DBIn(text, false, false) + QLatin1Char(',') +
                               QString::number(root.ActiveUser().UserSys()) + QLatin1Char(',') +
                               (chkMarkPrivate->isChecked() ? QLatin1Char('1') : QLatin1Char('0')),
                           false);
    if (chkEmailAlert->isChecked())
        sendAlert(text);
    Form<frmTLMain>().UpdateNoteCountFromDatabase(); // the note may be for oneself
    root.Functions().ShowOnTop(this, false);
    MsgBox(QStringLiteral("Your message has been successfully sent!"), vb::vbInformation);
    Unload<frmTLLeaveNote>();
}

void frmTLLeaveNote::sendAlert(const QString& text) {
    auto& root = TLMain();
    auto& data = root.DataAccess();
    const QString sender = root.ActiveContact().FullName();
    const QString body =
        QStringLiteral("You have received a note from: ") + sender + kLineEnd + kLineEnd + text +
        kLineEnd + kLineEnd + QStringLiteral("--------------------------") + kLineEnd +
        QStringLiteral("Please do not reply to this email, instead go to ") +
        MakerAddresses::WebSite +
        QStringLiteral(" or log into the Tavlo Application to reply or review your note.");
    const QString from = data.DBIn(MakerAddresses::NotesMail, false, false);
    data.ExecuteSQLFromWeb(
        QStringLiteral("EXEC tl_SendEmail ") + data.DBIn(Contact.EmailAddress, false, false) +
            QLatin1Char(',') +
            data.DBIn(sender + QStringLiteral(" Has Sent You a Note From Tavlo"), false, false) +
            QLatin1Char(',') + data.DBIn(body, false, false) + QLatin1Char(',') + from +
            QLatin1Char(',') + from,
        false);
}

void frmTLLeaveNote::cmdCancel_Click() {
    Unload<frmTLLeaveNote>();
}

void frmTLLeaveNote::closeEvent(QCloseEvent* event) {
    event->accept();
    Unload<frmTLLeaveNote>();
}
