// The update log: one line a message, stamped, appended to TLFTPlog.txt in the update folder.
#include "shell/modTLMain.h"

#include "base/Clock.h"
#include "base/Regional.h"
#include "update/TLFTP.h"
#include <QFile>

namespace modTLMain {

void WriteLog(QString& strMessage) {
    strMessage += QStringLiteral("     ") + Regional::DateText(Clock::Now());
    QFile log(TLFTP::Folder() + QStringLiteral("/TLFTPlog.txt"));
    if (!log.open(QIODevice::Append | QIODevice::Text))
        return; // the log is a help, never a reason to stop
    log.write(strMessage.toLocal8Bit() + '\n');
}

} // namespace modTLMain
