#include "ChangeFeed.h"

#include "Database.h"
#include "SessionStore.h"
#include <QUuid>
#include <cstdio>
#include <fcntl.h>
#include <libpq-fe.h>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr const char* kChannel = "tavlo_change";
constexpr int kReconnectMs = 500;

} // namespace

ChangeFeed::ChangeFeed(Database& db) : m_db(db), m_id(QUuid::createUuid().toString(QUuid::Id128)) {
    if (::pipe2(m_pipe, O_NONBLOCK | O_CLOEXEC) != 0)
        throw std::runtime_error("cannot make the change feed's wake-up pipe");
    m_thread = std::thread([this] { run(); });
}

ChangeFeed::~ChangeFeed() {
    m_stop = true;
    wake();
    m_thread.join();
    ::close(m_pipe[0]);
    ::close(m_pipe[1]);
}

void ChangeFeed::Changed() {
    if (!m_pending.exchange(true))
        wake();
}

void ChangeFeed::SessionsEnded() {
    m_sessionsEnded = true;
    Changed();
}

void ChangeFeed::wake() {
    const char byte = 1;
    [[maybe_unused]] const auto ignored = ::write(m_pipe[1], &byte, 1);
}

void ChangeFeed::drain() {
    char bytes[64];
    while (::read(m_pipe[0], bytes, sizeof bytes) > 0) {
    }
}

bool ChangeFeed::pause(int milliseconds) {
    pollfd waiting{m_pipe[0], POLLIN, 0};
    ::poll(&waiting, 1, milliseconds);
    drain();
    return !m_stop;
}

void ChangeFeed::run() {
    const QByteArray conninfo = m_db.connectionInfo().toUtf8();
    bool heardBefore = false;
    while (!m_stop) {
        PGconn* connection = PQconnectdb(conninfo.constData());
        PGresult* listen = PQstatus(connection) == CONNECTION_OK
                               ? PQexec(connection, (QByteArray("LISTEN ") + kChannel).constData())
                               : nullptr;
        const bool listening = listen && PQresultStatus(listen) == PGRES_COMMAND_OK;
        PQclear(listen);
        if (listening) {
            // Whatever happened while nobody listened is unknown: start afresh.
            if (heardBefore) {
                m_db.bumpVersion();
                SessionStore::Outdate();
            }
            heardBefore = true;
            serve(connection);
        }
        PQfinish(connection);
        if (!m_stop && !pause(kReconnectMs))
            break;
    }
}

// Sends a notice when this server changed data, takes the others' as they come; returns when
// stopping or when the connection broke.
bool ChangeFeed::serve(PGconn* connection) {
    const QByteArray notice = QByteArray("NOTIFY ") + kChannel + ", '" + m_id.toLatin1();
    while (!m_stop) {
        if (m_pending.exchange(false)) {
            // " sessions": sessions ended too, which the others must not accept any longer.
            const QByteArray what = notice + (m_sessionsEnded.exchange(false) ? " sessions'" : "'");
            PGresult* sent = PQexec(connection, what.constData());
            const bool ok = PQresultStatus(sent) == PGRES_COMMAND_OK;
            PQclear(sent);
            if (!ok) {
                m_pending = true;
                return false;
            }
        }
        if (!PQconsumeInput(connection))
            return false;
        while (PGnotify* heard = PQnotifies(connection)) {
            const QByteArray payload(heard->extra);
            if (!payload.startsWith(m_id.toLatin1())) {
                m_db.bumpVersion();
                if (payload.endsWith(" sessions"))
                    SessionStore::Outdate();
            }
            PQfreemem(heard);
        }
        pollfd waiting[2] = {{PQsocket(connection), POLLIN, 0}, {m_pipe[0], POLLIN, 0}};
        if (::poll(waiting, 2, -1) < 0)
            continue;
        if (waiting[1].revents)
            drain();
    }
    return true;
}
