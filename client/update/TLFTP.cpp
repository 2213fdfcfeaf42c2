#include "update/TLFTP.h"

#include "base/Forms.h"
#include "base/Regional.h"
#include "base/Screen.h"
#include "base/TLError.h"
#include "shell/modTLMain.h"
#include "update/FtpSession.h"
#include "update/frmTLFTP.h"
#include "update/frmTLProgress.h"
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTime>

namespace {

constexpr long kStepTimeout = 5;
constexpr long kTransferTimeout = 600;

void log(const QString& text) {
    QString message = text;
    modTLMain::WriteLog(message);
}

// Turns the event loop until the flag is up (or, when given, the way out).
void pumpUntil(const bool& flag, const bool* wayOut = nullptr) {
    while (!flag && !(wayOut && *wayOut))
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

FtpSession& control() {
    return *Form<frmTLFTP>().mFtp;
}

} // namespace

QString TLFTP::Folder() {
    const QString program = QCoreApplication::applicationDirPath();
    if (QFileInfo(program).isWritable())
        return program;
    const QString data = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(data);
    return data;
}

double TLFTP::Timer() {
    return QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
}

void TLFTP::GetUpdateFile() {
    try {
        control().Host = strFTPSite;
        control().User = strFTPUserName;
        control().Password = strFTPPassword;
        log(QStringLiteral("Transfering files from Tavlo..."));
        if (Folder() != QCoreApplication::applicationDirPath())
            log(QStringLiteral("The program's folder can't be written; the update goes to ") +
                Folder());
        control().Timeout = kStepTimeout;
        blnSkipUpload = false;
        blnFTPAvailable = false;
        control().Connect();
        pumpUntil(blnFTPAvailable, &blnSkipUpload);
        if (!blnSkipUpload) {
            control().Timeout = kStepTimeout;
            control().ChangeDirectory(strFTPDirectory);
            blnFTPAvailable = false;
            pumpUntil(blnFTPAvailable);
            TransferUpdateFile(strFTPUpdateFileName, QStringLiteral("Tavlo Application Update"));
        }
        DisconnectFTP();
        blnSkipUpload = false;
        Screen::SetMousePointer(Screen::vbDefault);
    } catch (...) {
        log(QStringLiteral("Error (Getting File) ") + CurrentError().description);
    }
}

// Each step goes on whatever the one before did.
void TLFTP::TransferUpdateFile(const QString& strFile, const QString& strLabel) {
    Guard([&] { Form<frmTLProgress>().prgProgress->setValue(0); });
    Guard([&] { log(QStringLiteral("Transfering ") + strLabel); });
    // After a failure the rest runs on without asking the server again.
    Guard([&] {
        if (blnAsyncError)
            return;
        control().Timeout = kStepTimeout;
        control().ListEntry(strFile);
        blnFTPAvailable = false;
        pumpUntil(blnFTPAvailable);
    });
    Guard([&] { lngGetFileSize = Regional::CLng(Regional::Val(Form<frmTLFTP>().lpstrSize)); });
    Guard([&] { dblOldTime = Timer(); });
    Guard([&] { Form<frmTLProgress>().show(); });
    Guard([&] {
        if (blnAsyncError)
            return;
        control().Timeout = kTransferTimeout;
        blnFTPAvailable = false;
        blnSentByGet = true;
        control().GetFile(Folder() + QLatin1Char('/') + strFile, strFile);
    });
    Guard([&] { pumpUntil(blnFTPAvailable); });
}

// The size the server names in a transfer's reply line, when it names one there.
void TLFTP::GetFileSize(const QString& strReply) {
    Guard([&] {
        const qsizetype pos =
            strReply.size() < 20 ? -1 : strReply.indexOf(QStringLiteral("bytes"), 19);
        const qsizetype length = (pos + 1) - strGetFileName.size() - 3;
        if (length < 0)
            Raise(5);
        lngGetFileSize =
            Regional::CLng(Regional::Val(strReply.mid(strGetFileName.size() + 1, length)));
        Form<frmTLProgress>().prgProgress->setMaximum(lngGetFileSize);
    });
}

void TLFTP::DisconnectFTP() {
    try {
        if (control().State() == 1) {
            blnFTPAvailable = false;
            control().Disconnect();
            pumpUntil(blnFTPAvailable);
            log(QStringLiteral("Disconnecting"));
        }
        Unload<frmTLFTP>();
        Unload<frmTLProgress>();
    } catch (...) {
        log(QStringLiteral("Error(Disconnecting) ") + CurrentError().description);
    }
}
