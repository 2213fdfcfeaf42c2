#pragma once

#include <QHash>
#include <QMutex>
#include <QtGlobal>
#include <atomic>

class Database;

// Who is on chat, by the heartbeat each client sends with its poll. Heartbeats are kept in
// memory, not written to the database: they change nothing anyone reads until a client goes
// quiet. Servers sharing a PostgreSQL database swap what they heard every few seconds through
// a table that is never flushed to disk.
class ChatPresence {
public:
    static ChatPresence& instance();

    // True when the contact was not counted as on chat until now.
    bool Seen(qint64 contact);
    void Forget(qint64 contact);
    // A heartbeat came within the window (here, or at another server by the last swap).
    bool OnChat(qint64 contact);
    // With PostgreSQL: sends this server's heartbeats and takes the others', at most once every
    // few seconds; errors are left for the next time. Someone back on chat by another
    // server's word outdates the answers kept here.
    void Swap(Database& db);

    // How long a heartbeat counts: the window less the time an answer may be kept, so that a
    // client gone quiet reads as off chat within the window.
    static qint64 countsForMs();
    // How long a board answer that shows chat flags may be kept.
    static qint64 answerLifeMs();

private:
    QMutex m_mutex;
    QHash<qint64, qint64> m_seen;   // contact -> last heartbeat, ms since the epoch
    QHash<qint64, qint64> m_unsent; // heard here since the last swap
    std::atomic<qint64> m_lastSwap{0};
    qint64 m_lastPrune = 0;
};
