#include "WebSessions.h"

#include <QMutexLocker>
#include <QRandomGenerator>

QString WebSessions::Open(qint64 userSys) {
    quint32 words[4];
    QRandomGenerator::system()->fillRange(words);
    const QString token =
        QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(words), sizeof words).toHex());
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QMutexLocker guard(&m_lock);
    for (auto it = m_sessions.begin(); it != m_sessions.end();) // lapsed ones go as new ones come
        it = it->lastUse.secsTo(now) > kIdleSeconds ? m_sessions.erase(it) : std::next(it);
    m_sessions.insert(token, {userSys, now});
    return token;
}

qint64 WebSessions::UserOf(const QString& token) {
    if (token.isEmpty())
        return -1;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QMutexLocker guard(&m_lock);
    auto it = m_sessions.find(token);
    if (it == m_sessions.end())
        return -1;
    if (it->lastUse.secsTo(now) > kIdleSeconds) {
        m_sessions.erase(it);
        return -1;
    }
    it->lastUse = now;
    return it->userSys;
}

QString WebSessions::TokenIn(const QString& cookieHeader) {
    const QString wanted = QString::fromLatin1(kCookie) + QLatin1Char('=');
    for (const QString& part : cookieHeader.split(QLatin1Char(';'))) {
        const QString cookie = part.trimmed();
        if (cookie.startsWith(wanted))
            return cookie.mid(wanted.size());
    }
    return {};
}
