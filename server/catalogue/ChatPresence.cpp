#include "ChatPresence.h"

#include "LogText.h"
#include "ServerSettings.h"
#include "store/Database.h"
#include <QDateTime>
#include <QStringList>

namespace {

constexpr qint64 kSwapMs = 3000;

qint64 nowMs() {
    return QDateTime::currentMSecsSinceEpoch();
}

QString arrayText(const QList<qint64>& values) {
    QStringList parts;
    parts.reserve(values.size());
    for (qint64 v : values)
        parts << QString::number(v);
    return QLatin1Char('{') + parts.join(QLatin1Char(',')) + QLatin1Char('}');
}

} // namespace

ChatPresence& ChatPresence::instance() {
    static ChatPresence presence;
    return presence;
}

qint64 ChatPresence::answerLifeMs() {
    return qint64(ServerSettings::Current().chatWindowSeconds) * 1000 / 9;
}

qint64 ChatPresence::countsForMs() {
    return qint64(ServerSettings::Current().chatWindowSeconds) * 1000 - answerLifeMs();
}

bool ChatPresence::Seen(qint64 contact) {
    const qint64 now = nowMs();
    QMutexLocker lock(&m_mutex);
    const auto before = m_seen.constFind(contact);
    const bool back = before == m_seen.constEnd() || now - *before > countsForMs();
    m_seen.insert(contact, now);
    m_unsent.insert(contact, now);
    if (now - m_lastPrune > countsForMs()) {
        m_lastPrune = now;
        m_seen.removeIf([&](const QHash<qint64, qint64>::iterator& entry) {
            return now - entry.value() > countsForMs();
        });
    }
    return back;
}

void ChatPresence::Forget(qint64 contact) {
    QMutexLocker lock(&m_mutex);
    m_seen.remove(contact);
    m_unsent.remove(contact);
}

bool ChatPresence::OnChat(qint64 contact) {
    QMutexLocker lock(&m_mutex);
    const auto found = m_seen.constFind(contact);
    return found != m_seen.constEnd() && nowMs() - *found <= countsForMs();
}

void ChatPresence::Swap(Database& db) {
    const qint64 now = nowMs();
    qint64 last = m_lastSwap.load();
    if (!db.isPostgres() || now - last < kSwapMs || !m_lastSwap.compare_exchange_strong(last, now))
        return;
    QHash<qint64, qint64> unsent;
    {
        QMutexLocker lock(&m_mutex);
        unsent.swap(m_unsent);
    }
    try {
        if (!unsent.isEmpty())
            db.exec(QStringLiteral("INSERT INTO chatseen (contactsys, seenat) SELECT * FROM "
                                   "unnest(?::bigint[], ?::bigint[]) ON CONFLICT (contactsys) DO "
                                   "UPDATE SET seenat = GREATEST(chatseen.seenat, "
                                   "excluded.seenat)"),
                    {arrayText(unsent.keys()), arrayText(unsent.values())});
        QSqlQuery heard =
            db.exec(QStringLiteral("SELECT contactsys, seenat FROM chatseen WHERE seenat >= ?"),
                    {now - countsForMs()});
        bool cameBack = false;
        {
            QMutexLocker lock(&m_mutex);
            while (heard.next()) {
                qint64& seen = m_seen[heard.value(0).toLongLong()];
                cameBack |= now - seen > countsForMs();
                seen = std::max(seen, heard.value(1).toLongLong());
            }
        }
        // Someone another server heard is on chat again: boards kept here are outdated.
        if (cameBack)
            db.bumpVersion();
    } catch (const std::exception& e) {
        LogLine(QStringLiteral("chat presence not shared this time: ") +
                QString::fromLocal8Bit(e.what()));
    }
}
