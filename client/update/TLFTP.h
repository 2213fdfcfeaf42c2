#pragma once

#include <QString>
#include <cstdint>

// The update transfer's state. The version check fills the coordinates (site, directory, file,
// credentials); the transfer itself arrives with the update work.
class TLFTP {
public:
    bool blnFTPAvailable = false;
    bool blnAsyncError = false;
    bool blnSkipUpload = false;
    bool blnSentByPut = false;
    bool blnSentByGet = false;
    std::int32_t lngGetFileSize = 0;
    QString strFilePath;
    QString strGetFileName;
    double dblOldTime = 0;
    QString strFTPUpdateFileName;
    QString strFTPSite;
    QString strFTPDirectory;
    QString strFTPUserName;
    QString strFTPPassword;
    QString strFileType;
    QString strMessage;
};
