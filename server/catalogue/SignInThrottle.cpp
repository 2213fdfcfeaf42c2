#include "SignInThrottle.h"

#include "LogText.h"
#include <QMutexLocker>
#include <algorithm>

SignInThrottle& SignInThrottle::instance() {
    static SignInThrottle throttle;
    return throttle;
}

QString SignInThrottle::accountKey(const QString& userName) {
    return QStringLiteral("account ") + userName.trimmed().toLower().left(64);
}

QString SignInThrottle::addressKey(const QString& peer) {
    return QStringLiteral("address ") + peer;
}

qint64 SignInThrottle::WaitMs(const QString& userName, const QString& peer) {
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QMutexLocker hold(&m_lock);
    qint64 wait = 0;
    for (const QString& key : {accountKey(userName), addressKey(peer)}) {
        const auto found = m_records.constFind(key);
        if (found != m_records.cend() && found->nextAllowed.isValid())
            wait = std::max(wait, now.msecsTo(found->nextAllowed));
    }
    return std::max<qint64>(wait, 0);
}

void SignInThrottle::fail(const QString& key) {
    Record& record = m_records[key];
    ++record.failures;
    if (record.failures < kFreeFailures)
        return;
    const int doublings = std::min(record.failures - kFreeFailures, 16);
    const qint64 wait = std::min<qint64>(1000LL << doublings, kLongestWaitMs);
    record.nextAllowed = QDateTime::currentDateTimeUtc().addMSecs(wait);
    LogLine(QStringLiteral("sign-in: %1 failures for %2; the next attempt waits %3 s")
                .arg(record.failures)
                .arg(key)
                .arg(double(wait) / 1000.0));
}

void SignInThrottle::Failed(const QString& userName, const QString& peer) {
    QMutexLocker hold(&m_lock);
    // An address that guesses at many accounts would fill memory: old records go first.
    if (m_records.size() > 100'000)
        m_records.clear();
    fail(accountKey(userName));
    fail(addressKey(peer));
}

void SignInThrottle::Succeeded(const QString& userName, const QString& peer) {
    QMutexLocker hold(&m_lock);
    m_records.remove(accountKey(userName));
    m_records.remove(addressKey(peer));
}

void SignInThrottle::Reset() {
    QMutexLocker hold(&m_lock);
    m_records.clear();
}
