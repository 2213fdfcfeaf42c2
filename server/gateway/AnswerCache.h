#pragma once

#include <QByteArray>
#include <QHash>
#include <QMutex>
#include <QString>
#include <cstdint>
#include <list>
#include <optional>

// Written answers of the big board reads, kept while the data hasn't changed: an entry is good
// only for the data version it was made at. A few hundred recent statements at most.
class AnswerCache {
public:
    explicit AnswerCache(size_t capacity = 256) : m_capacity(capacity) {}

    // Only reads whose answer depends on nothing but the stored data and the statement.
    static bool Cacheable(const QString& procedure);

    std::optional<QByteArray> Find(const QString& statement, std::uint64_t version);
    void Store(const QString& statement, std::uint64_t version, const QByteArray& answer);

private:
    struct Entry {
        std::uint64_t version;
        QByteArray answer;
        std::list<QString>::iterator age;
    };
    QMutex m_mutex;
    size_t m_capacity;
    QHash<QString, Entry> m_entries;
    std::list<QString> m_ages; // most recent first
};
