#include "AnswerCache.h"

#include <QSet>

namespace {

constexpr std::size_t kEntryOverhead = 128;
const QByteArray kFriendMark = QByteArrayLiteral(" myfriend='0'/>");

std::size_t sizeOf(const QString& key, const AnswerCache::Answer& answer) {
    return kEntryOverhead + std::size_t(key.size()) * 2 + std::size_t(answer.xml.size()) +
           answer.contacts.size() * sizeof(qint64) + answer.friendMarks.size() * sizeof(qsizetype);
}

} // namespace

AnswerCache::AnswerCache(std::size_t budgetBytes) : m_budget(budgetBytes) {}

bool AnswerCache::Cacheable(const QString& procedure) {
    static const QSet<QString> reads = {
        QStringLiteral("tl_getuserstatuses"),   QStringLiteral("tl_getmyfriendslist"),
        QStringLiteral("tl_getcompanylist"),    QStringLiteral("tl_searchcontacts"),
        QStringLiteral("tl_getcontactlist"),    QStringLiteral("tl_getavailablestatuses"),
        QStringLiteral("tl_getavailablecolors")};
    return reads.contains(procedure.toLower());
}

int AnswerCache::FriendMarkArgument(const QString& procedure, std::size_t argumentCount) {
    const QString name = procedure.toLower();
    if (name == QStringLiteral("tl_getuserstatuses") && argumentCount >= 4)
        return 3;
    if (name == QStringLiteral("tl_searchcontacts") && argumentCount == 4)
        return 3;
    if (name == QStringLiteral("tl_getcompanylist") && argumentCount == 1)
        return 0;
    return -1;
}

std::vector<qsizetype> AnswerCache::FriendMarks(const QByteArray& xml, std::size_t rows) {
    std::vector<qsizetype> marks;
    marks.reserve(rows);
    for (qsizetype at = xml.indexOf(kFriendMark); at >= 0;
         at = xml.indexOf(kFriendMark, at + kFriendMark.size()))
        marks.push_back(at + kFriendMark.indexOf('0'));
    if (marks.size() != rows)
        marks.clear();
    return marks;
}

std::shared_ptr<const AnswerCache::Answer> AnswerCache::Find(const QString& key,
                                                             std::uint64_t version) {
    QMutexLocker lock(&m_mutex);
    const auto found = m_entries.find(key);
    if (found == m_entries.end())
        return nullptr;
    if (found->version != version) {
        drop(found);
        return nullptr;
    }
    m_ages.splice(m_ages.begin(), m_ages, found->age);
    return found->answer;
}

void AnswerCache::Store(const QString& key, std::uint64_t version,
                        std::shared_ptr<const Answer> answer) {
    const std::size_t bytes = sizeOf(key, *answer);
    QMutexLocker lock(&m_mutex);
    if (version < m_newest || bytes > m_budget)
        return; // made from data already outdated, or too big to keep at all
    if (version > m_newest) {
        clear();
        m_newest = version;
    }
    if (const auto found = m_entries.find(key); found != m_entries.end())
        drop(found);
    while (m_bytes + bytes > m_budget && !m_ages.empty())
        drop(m_entries.find(m_ages.back()));
    m_ages.push_front(key);
    m_entries.insert(key, {version, std::move(answer), bytes, m_ages.begin()});
    m_bytes += bytes;
}

std::size_t AnswerCache::Bytes() const {
    QMutexLocker lock(&m_mutex);
    return m_bytes;
}

void AnswerCache::drop(QHash<QString, Entry>::iterator entry) {
    m_bytes -= entry->bytes;
    m_ages.erase(entry->age);
    m_entries.erase(entry);
}

void AnswerCache::clear() {
    m_entries.clear();
    m_ages.clear();
    m_bytes = 0;
}
