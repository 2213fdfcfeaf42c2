#pragma once

#include <QByteArray>
#include <QHash>
#include <QMutex>
#include <QString>
#include <cstdint>
#include <list>
#include <memory>
#include <vector>

// Written answers of the big reads, kept while the data hasn't changed: an entry is good only
// for the data version it was made at, and all older ones go as soon as a newer version is
// stored. The least recently used go first when the entries would take more than the budget.
class AnswerCache {
public:
    // One written answer. A board list made for everybody also knows, row by row, the
    // person's key and where its friend mark ('0') stands, so that one asker's friends can be
    // marked on a copy.
    struct Answer {
        QByteArray xml;
        std::vector<qint64> contacts;
        std::vector<qsizetype> friendMarks;
    };

    explicit AnswerCache(std::size_t budgetBytes);

    // Only reads whose answer depends on nothing but the stored data, the statement and the
    // caller's organisation.
    static bool Cacheable(const QString& procedure);
    // The argument that names the user whose friends a list marks, or -1 when the list has
    // no friend marks to share it by.
    static int FriendMarkArgument(const QString& procedure, std::size_t argumentCount);
    // Where each row's friend mark stands; empty unless every row has one.
    static std::vector<qsizetype> FriendMarks(const QByteArray& xml, std::size_t rows);

    std::shared_ptr<const Answer> Find(const QString& key, std::uint64_t version);
    void Store(const QString& key, std::uint64_t version, std::shared_ptr<const Answer> answer);
    std::size_t Bytes() const;

private:
    struct Entry {
        std::uint64_t version;
        std::shared_ptr<const Answer> answer;
        std::size_t bytes;
        std::list<QString>::iterator age;
    };
    void drop(QHash<QString, Entry>::iterator entry);
    void clear();

    mutable QMutex m_mutex;
    std::size_t m_budget;
    std::size_t m_bytes = 0;
    std::uint64_t m_newest = 0;
    QHash<QString, Entry> m_entries;
    std::list<QString> m_ages; // most recent first
};
