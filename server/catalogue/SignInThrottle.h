#pragma once

#include <QDateTime>
#include <QHash>
#include <QMutex>
#include <QString>

// Slows down password guessing: after five failed sign-ins for one account, or from one
// address, each further attempt has to wait, one second after the fifth failure and twice as
// long after each next, up to a minute. A good sign-in clears both counts. The web sign-in and
// the gateway's share one throttle.
class SignInThrottle {
public:
    static constexpr int kFreeFailures = 5;
    static constexpr qint64 kLongestWaitMs = 60'000;

    static SignInThrottle& instance();

    // How long the attempt still has to wait, in milliseconds; 0 when it may go ahead.
    qint64 WaitMs(const QString& userName, const QString& peer);
    void Failed(const QString& userName, const QString& peer);
    void Succeeded(const QString& userName, const QString& peer);
    // Forgets every count (tests, and a fresh start).
    void Reset();

private:
    struct Record {
        int failures = 0;
        QDateTime nextAllowed;
    };
    static QString accountKey(const QString& userName);
    static QString addressKey(const QString& peer);
    void fail(const QString& key);

    QMutex m_lock;
    QHash<QString, Record> m_records;
};
