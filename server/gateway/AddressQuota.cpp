#include "AddressQuota.h"

#include <QDateTime>
#include <QMutexLocker>

bool AddressQuota::Take(const QString& address) {
    const qint64 minute = QDateTime::currentSecsSinceEpoch() / 60;
    QMutexLocker hold(&m_lock);
    if (m_windows.size() > 50'000) // a new minute starts every count again anyway
        m_windows.removeIf([minute](const auto& entry) { return entry.value().minute != minute; });
    Window& window = m_windows[address];
    if (window.minute != minute)
        window = {minute, 0};
    if (window.used >= m_perMinute)
        return false;
    ++window.used;
    return true;
}
