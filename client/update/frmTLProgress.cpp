#include "update/frmTLProgress.h"

#include "base/MsgBox.h"
#include "base/Screen.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "update/TLFTP.h"
#include <QCoreApplication>
#include <QFileInfo>
#include <QMovie>

frmTLProgress::frmTLProgress() {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLProgress"));
    connect(cmdCancel, &QPushButton::clicked, this, &frmTLProgress::cmdCancel_Click);
    ResetTextBoxes();
}

QString frmTLProgress::ClipPath() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/filecopy.gif");
}

bool frmTLProgress::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate)
        ResetTextBoxes();
    return QDialog::event(event);
}

void frmTLProgress::ResetTextBoxes() {
    txtPercent->clear();
    txtBytes->setText(QStringLiteral("N/A"));
    txtTransferRate->setText(QStringLiteral("N/A"));
    Animation->setVisible(m_clip || QFileInfo::exists(ClipPath()));
    if (!m_clip && QFileInfo::exists(ClipPath())) {
        m_clip = new QMovie(ClipPath(), QByteArray(), this);
        Animation->setMovie(m_clip);
        m_clip->start();
    }
}

// The part already written stays in the folder; the flags tell the waiting side it's over.
void frmTLProgress::cmdCancel_Click() {
    if (MsgBox(QStringLiteral("Are you sure you wish to cancel this download?"),
               vb::vbYesNo + vb::vbQuestion) == vb::vbYes) {
        auto& ftp = TLMain().FTP();
        QString message = QStringLiteral("User Canceled Download");
        modTLMain::WriteLog(message);
        ftp.blnAsyncError = true;
        ftp.blnSkipUpload = true;
        ftp.blnFTPAvailable = true;
        ftp.DisconnectFTP();
    }
    Screen::SetMousePointer(Screen::vbDefault);
}
