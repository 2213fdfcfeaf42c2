#include "LogText.h"

#include <QMutex>
#include <QMutexLocker>
#include <cstdio>

QString LogSafe(const QString& text) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u < 0x20 || u == 0x7f || (u >= 0x80 && u < 0xa0) || u == 0x2028 || u == 0x2029 ||
            u == '\\')
            out += u == '\\' ? QStringLiteral("\\\\")
                             : QStringLiteral("\\x%1").arg(int(u), 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out;
}

void LogLine(const QString& line) {
    static QMutex lock;
    const QByteArray bytes = LogSafe(line).toUtf8() + '\n';
    QMutexLocker hold(&lock);
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stderr);
    std::fflush(stderr);
}
