#pragma once

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QString>
#include <initializer_list>

// Helpers of the fixtures that run a real server as a child process.

// Asks the server to end, and ends it if it doesn't within five seconds.
inline void StopChild(QProcess& process) {
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}

// The last few kilobytes of each of a server's log files in its folder, for a test's failure
// message; files that aren't there are passed over.
inline QString LogTails(const QString& folder, std::initializer_list<const char*> names) {
    QString text;
    for (const char* name : names) {
        QFile file(QDir(folder).filePath(QString::fromLatin1(name)));
        if (file.open(QIODevice::ReadOnly))
            text += QString::fromUtf8(file.readAll().right(8000));
    }
    return text;
}
