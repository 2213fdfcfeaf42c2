#include "AnswerCache.h"

#include <QSet>

bool AnswerCache::Cacheable(const QString& procedure) {
    static const QSet<QString> reads = {
        QStringLiteral("tl_getuserstatuses"),   QStringLiteral("tl_getmyfriendslist"),
        QStringLiteral("tl_getcompanylist"),    QStringLiteral("tl_searchcontacts"),
        QStringLiteral("tl_getcontactlist"),    QStringLiteral("tl_getavailablestatuses"),
        QStringLiteral("tl_getavailablecolors")};
    return reads.contains(procedure.toLower());
}

std::optional<QByteArray> AnswerCache::Find(const QString& statement, std::uint64_t version) {
    QMutexLocker lock(&m_mutex);
    const auto found = m_entries.find(statement);
    if (found == m_entries.end() || found->version != version)
        return std::nullopt;
    m_ages.splice(m_ages.begin(), m_ages, found->age);
    return found->answer;
}

void AnswerCache::Store(const QString& statement, std::uint64_t version, const QByteArray& answer) {
    QMutexLocker lock(&m_mutex);
    const auto found = m_entries.find(statement);
    if (found != m_entries.end()) {
        found->version = version;
        found->answer = answer;
        m_ages.splice(m_ages.begin(), m_ages, found->age);
        return;
    }
    m_ages.push_front(statement);
    m_entries.insert(statement, {version, answer, m_ages.begin()});
    if (m_entries.size() > static_cast<qsizetype>(m_capacity)) {
        m_entries.remove(m_ages.back());
        m_ages.pop_back();
    }
}
