#pragma once

#include <QString>
#include <cstdint>

// The update transfer: the coordinates the version check found, the flags through which the
// waiting side and the FTP control's events meet, and the procedures that fetch the file into
// the update folder while the progress dialog runs.
class TLFTP {
public:
    bool blnFTPAvailable = false; // the rendezvous: cleared by whoever starts an action
    bool blnAsyncError = false;   // a failure or a cancel: the file is not to be started
    bool blnSkipUpload = false;   // stop waiting
    bool blnSentByPut = false;    // never set: this client doesn't upload
    bool blnSentByGet = false;
    std::int32_t lngGetFileSize = 0;
    QString strFilePath;
    QString strGetFileName;
    double dblOldTime = 0; // seconds since midnight at the last rate computation
    QString strFTPUpdateFileName;
    QString strFTPSite;
    QString strFTPDirectory;
    QString strFTPUserName;
    QString strFTPPassword;
    QString strFileType;
    QString strMessage;
    QString strUpdateSha256; // lower-case hex when the server publishes it, else empty

    // Connect, change directory, fetch, disconnect; returns when it is over either way.
    void GetUpdateFile();
    void TransferUpdateFile(const QString& strFile, const QString& strLabel);
    void GetFileSize(const QString& strReply);
    void DisconnectFTP();

    // Where the update file and the log go: the program's folder, or the user's data folder
    // when the program's folder can't be written (an installed package).
    static QString Folder();
    // Seconds since midnight, as the rate computation counts time.
    static double Timer();
};
