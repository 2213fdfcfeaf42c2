#include "update/frmTLUpdate.h"

#include "base/MsgBox.h"
#include "board/frmTLView.h"
#include "shell/TLMain.h"
#include "shell/frmTLMain.h"
#include "shell/modTLMain.h"
#include "update/TLFTP.h"
#include "update/UpdateStarter.h"
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

frmTLUpdate::frmTLUpdate() {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLUpdate"));
    connect(cmdYes, &QPushButton::clicked, this, &frmTLUpdate::cmdYes_Click);
    connect(cmdNo, &QPushButton::clicked, this, &frmTLUpdate::cmdNo_Click);
}

void frmTLUpdate::Form_Load() {
    fmeUpdateDialog->show();
    lblUpdate->setText(
        QStringLiteral("A new version of Tavlo has been released.  It is recommended that you "
                       "update to the latest version.  If you choose not to update, all of the "
                       "Tavlo features may not work correctly.") +
        QStringLiteral("\r\n\rWould you like to proceed with the update?"));
}

void frmTLUpdate::cmdNo_Click() {
    Unload<frmTLUpdate>();
}

QString frmTLUpdate::UpdateFilePath() {
    return TLFTP::Folder() + QLatin1Char('/') + TLMain().FTP().strFTPUpdateFileName;
}

bool frmTLUpdate::FileMayStart() {
    const auto& ftp = TLMain().FTP();
    const QString path = UpdateFilePath();
    if (ftp.blnAsyncError || ftp.strFTPUpdateFileName.isEmpty() || !QFileInfo::exists(path))
        return false;
    if (ftp.strUpdateSha256.isEmpty())
        return true;
    QFile file(path);
    QCryptographicHash digest(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !digest.addData(&file) ||
        QString::fromLatin1(digest.result().toHex()) != ftp.strUpdateSha256) {
        QString message = QStringLiteral("Update file does not match its published checksum: ") +
                          path + QStringLiteral(" not started");
        modTLMain::WriteLog(message);
        MsgBox(QStringLiteral("The update file that came down is not the one that was "
                              "published, so it was not started.\r\rTavlo goes on with the "
                              "version you have."),
               vb::vbCritical);
        return false;
    }
    return true;
}

// The file does the installing; this process ends at once so that its files are free.
void frmTLUpdate::cmdYes_Click() {
    Unload<frmTLUpdate>();
    TLMain().FTP().GetUpdateFile();
    if (!FileMayStart())
        return;
    UpdateStarter::Start(UpdateFilePath());
    if (auto* board = LoadedForm<frmTLView>(); board && board->Socket)
        modTLMain::ChatDisConnect();
    Unload<frmTLMain>();
    modTLMain::EndProgram();
}
