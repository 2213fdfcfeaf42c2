#pragma once

#include "base/Forms.h"
#include <QWidget>

class FtpSession;

// The hidden form that hosts the FTP control: its events set the flags the transfer waits on,
// read the listing, and drive the progress dialog.
class frmTLFTP : public QWidget {
    Q_OBJECT
public:
    frmTLFTP();

    FtpSession* mFtp;
    QString lpstrName;
    QString lpstrDate;
    QString lpstrSize;
    qint64 lastBytes = 0; // bytes at the last rate computation

    void mFtp_Error(long number, const QString& text);
    void mFtp_Connected(int unused);
    void mFtp_Reply(const QString& line);
    // An "ls -l" line: the size between the second and third runs of blanks, the date up to
    // the eighth, the name after it.
    void mFtp_List(const QString& entry);
    void mFtp_Done();
    void mFtp_Progress(qint64 bytes);
};
