#pragma once

#include <QHash>
#include <QMutex>
#include <QString>

// At most so many uses a minute per address, each address counted apart: what keeps one
// machine from filling the database with writes that need no account.
class AddressQuota {
public:
    explicit AddressQuota(int perMinute) : m_perMinute(perMinute) {}
    // Counts a use; false when the address has had its share of this minute.
    bool Take(const QString& address);

private:
    struct Window {
        qint64 minute = 0;
        int used = 0;
    };
    const int m_perMinute;
    QMutex m_lock;
    QHash<QString, Window> m_windows;
};
