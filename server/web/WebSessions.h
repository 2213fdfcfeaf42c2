#pragma once

#include <QDateTime>
#include <QHash>
#include <QMutex>
#include <QString>

// The web site's signed-in visitors: a random token in a cookie stands for a user. A session
// lapses after a spell without use. Safe to use from the server's worker threads.
class WebSessions {
public:
    static constexpr const char* kCookie = "TavloWeb";
    static constexpr qint64 kIdleSeconds = 8 * 3600;

    // A new session for the user; the token to put in the cookie.
    QString Open(qint64 userSys);
    // The user of a live session (and the session's use noted), or -1.
    qint64 UserOf(const QString& token);
    // The token in a Cookie header, or an empty text.
    static QString TokenIn(const QString& cookieHeader);

private:
    struct Entry {
        qint64 userSys = -1;
        QDateTime lastUse;
    };
    QMutex m_lock;
    QHash<QString, Entry> m_sessions;
};
