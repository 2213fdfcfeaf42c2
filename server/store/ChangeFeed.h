#pragma once

#include <QString>
#include <atomic>
#include <thread>

class Database;
struct pg_conn;

// Tells the other servers on the same PostgreSQL database that this one changed data, and
// hears when they did, so that every server drops its cached answers within moments of a
// write anywhere (LISTEN/NOTIFY on one connection of its own). Writes that come close
// together go out as one notice. A lost connection is made again, and since notices may have
// been missed meanwhile, the caches are dropped then too.
class ChangeFeed {
public:
    explicit ChangeFeed(Database& db);
    ~ChangeFeed();
    ChangeFeed(const ChangeFeed&) = delete;
    ChangeFeed& operator=(const ChangeFeed&) = delete;

    void Changed();       // from any thread, after a commit that changed data
    void SessionsEnded(); // from any thread, after sessions were ended here

private:
    void run();
    bool serve(pg_conn* connection); // false when the connection broke
    void wake();
    void drain();
    bool pause(int milliseconds); // false when stopping

    Database& m_db;
    QString m_id; // in our own notices, which are not news to us
    int m_pipe[2] = {-1, -1};
    std::atomic<bool> m_pending{false};
    std::atomic<bool> m_sessionsEnded{false};
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};
