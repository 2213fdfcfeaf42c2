#include "update/frmTLFTP.h"

#include "base/MsgBox.h"
#include "base/Regional.h"
#include "base/Screen.h"
#include "base/TLError.h"
#include "config/MakerAddresses.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "update/FtpSession.h"
#include "update/TLFTP.h"
#include "update/frmTLProgress.h"

namespace {

void log(const QString& text) {
    QString message = text;
    modTLMain::WriteLog(message);
}

// The listing as the update code reads it: the size third, as "perm links size owner group
// month day time name". A server's "ls -l" line has it fifth; other lines pass unchanged.
QString sizeThird(const QString& entry) {
    QStringList fields = entry.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (fields.size() < 9)
        return entry;
    fields.move(4, 2);
    const QString name =
        entry.mid(entry.indexOf(fields[8], entry.indexOf(fields[7]) + fields[7].size()));
    fields = fields.mid(0, 8);
    return fields.join(QLatin1Char(' ')) + QLatin1Char(' ') + name;
}

} // namespace

frmTLFTP::frmTLFTP() : mFtp(new FtpSession(this)) {
    setObjectName(QStringLiteral("frmTLFTP"));
    setWindowTitle(QStringLiteral("FTP Control"));
    mFtp->setObjectName(QStringLiteral("mFtp"));
    connect(mFtp, &FtpSession::Error, this, &frmTLFTP::mFtp_Error);
    connect(mFtp, &FtpSession::Connected, this, &frmTLFTP::mFtp_Connected);
    connect(mFtp, &FtpSession::Reply, this, &frmTLFTP::mFtp_Reply);
    connect(mFtp, &FtpSession::List, this,
            [this](const QString& entry) { mFtp_List(sizeThird(entry)); });
    connect(mFtp, &FtpSession::Done, this, &frmTLFTP::mFtp_Done);
    connect(mFtp, &FtpSession::Progress, this, &frmTLFTP::mFtp_Progress);
}

// The two error flags go up before the rendezvous, so the waiting side sees why it woke.
void frmTLFTP::mFtp_Error(long, const QString& text) {
    auto& ftp = TLMain().FTP();
    MsgBox(QStringLiteral("There was a problem with your network connection. \r\rIf this error "
                          "persists, please contact Norvane support or \rgo to ") +
               MakerAddresses::WebSite + QStringLiteral(" to download the latest version."),
           vb::vbCritical);
    log(QStringLiteral("AsyncError:  ") + text);
    ftp.blnAsyncError = true;
    ftp.blnSkipUpload = true;
    ftp.blnFTPAvailable = true;
    ftp.DisconnectFTP();
    Screen::SetMousePointer(Screen::vbDefault);
}

void frmTLFTP::mFtp_Connected(int) {
    if (mFtp->State() == 1)
        log(QStringLiteral("Connected to (") + mFtp->Host + QStringLiteral(")..."));
    TLMain().FTP().blnFTPAvailable = true;
}

void frmTLFTP::mFtp_Reply(const QString& line) {
    auto& ftp = TLMain().FTP();
    if (line.mid(44, ftp.strGetFileName.size()) == ftp.strGetFileName)
        ftp.GetFileSize(line);
}

void frmTLFTP::mFtp_List(const QString& entry) {
    try {
        auto& ftp = TLMain().FTP();
        if (entry.isEmpty()) {
            ftp.blnSkipUpload = true;
            log(QStringLiteral("File missing from remote server"));
            return;
        }
        ftp.blnSkipUpload = false;
        if (entry.startsWith(QLatin1Char('d')))
            return;
        QString text = entry;
        if (text.endsWith(QStringLiteral("\r\n")))
            text.chop(2);
        int runs = 0;
        qsizetype marked = 0;
        qsizetype i = 0;
        for (; i < text.size(); ++i) {
            if (text.at(i) != QLatin1Char(' ') || (i > 0 && text.at(i - 1) == QLatin1Char(' ')))
                continue;
            ++runs;
            if (runs == 2) {
                marked = i;
            } else if (runs == 3) {
                lpstrSize = text.mid(marked, i - marked).trimmed();
                marked = i;
            } else if (runs == 8) {
                break;
            }
        }
        lpstrDate = text.mid(marked, i - marked).trimmed();
        lpstrName = text.mid(i).trimmed();
    } catch (...) {
        log(QStringLiteral("Error(Getting Directory Info) ") + CurrentError().description);
    }
}

void frmTLFTP::mFtp_Done() {
    auto& ftp = TLMain().FTP();
    if (ftp.blnSentByPut || ftp.blnSentByGet) {
        log(QStringLiteral("File Transfered Successfully"));
        Screen::SetMousePointer(Screen::vbDefault);
        Form<frmTLProgress>().hide();
        ftp.blnSentByPut = false;
        ftp.blnSentByGet = false;
        Form<frmTLProgress>().txtBytes->setText(QStringLiteral("0"));
    }
    ftp.blnFTPAvailable = true;
}

// Bytes, share and rate; the rate moves about once a second, in thousands of bytes a second.
void frmTLFTP::mFtp_Progress(qint64 bytes) {
    auto& ftp = TLMain().FTP();
    auto& progress = Form<frmTLProgress>();
    double fraction = 0;
    bool haveFraction = false;
    Guard([&] {
        progress.prgProgress->setMaximum(Regional::CLng(Regional::CDbl(lpstrSize)));
        progress.prgProgress->setValue(int(bytes));
    });
    Guard([&] { progress.txtBytes->setText(QString::number(bytes)); });
    Guard([&] {
        if (ftp.blnSentByGet) {
            const double size = Regional::CDbl(lpstrSize);
            if (size == 0)
                Raise(11); // division by zero
            fraction = double(bytes) / size;
            haveFraction = true;
        }
    });
    Guard([&] {
        if (haveFraction)
            progress.txtPercent->setText(Regional::Format(fraction, QStringLiteral("0%")));
    });
    Guard([&] {
        const double elapsed = std::round(TLFTP::Timer() - ftp.dblOldTime);
        if (elapsed == 0)
            return;
        progress.txtTransferRate->setText(Regional::Format(
            std::abs(double(bytes - lastBytes)) / elapsed / 1000, QStringLiteral("#0.0")));
        ftp.dblOldTime = TLFTP::Timer();
        lastBytes = bytes;
    });
}
