#include "web/CommandReader.h"

#include <cerrno>
#include <unistd.h>

CommandReader::CommandReader() : m_notifier(STDIN_FILENO, QSocketNotifier::Read) {
    connect(&m_notifier, &QSocketNotifier::activated, this, &CommandReader::readAvailable);
}

void CommandReader::readAvailable() {
    char buffer[16384];
    const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (got <= 0) {
        m_notifier.setEnabled(false);
        emit ended();
        return;
    }
    m_pending.append(buffer, got);
    qsizetype end;
    while ((end = m_pending.indexOf('\n')) >= 0) {
        const QByteArray line = m_pending.left(end);
        m_pending.remove(0, end + 1);
        emit lineReceived(line);
    }
}
