#include "SmtpSink.h"

#include <QElapsedTimer>
#include <QString>
#include <QThread>
#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

QByteArray address(const QByteArray& line) {
    const qsizetype open = line.indexOf('<'), close = line.lastIndexOf('>');
    return open >= 0 && close > open ? line.mid(open + 1, close - open - 1) : QByteArray();
}

} // namespace

SmtpSink::SmtpSink() {
    m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in where{};
    where.sin_family = AF_INET;
    where.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(m_listener, reinterpret_cast<sockaddr*>(&where), sizeof where);
    socklen_t length = sizeof where;
    ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&where), &length);
    m_port = ntohs(where.sin_port);
    ::listen(m_listener, 16);
    m_thread = std::thread([this] { serve(); });
}

SmtpSink::~SmtpSink() {
    m_stopping = true;
    ::shutdown(m_listener, SHUT_RDWR);
    ::close(m_listener);
    m_thread.join();
}

QString SmtpSink::url() const {
    return QStringLiteral("smtp://127.0.0.1:%1").arg(m_port);
}

QList<SmtpSink::Mail> SmtpSink::mails() const {
    QMutexLocker hold(&m_lock);
    return m_mails;
}

bool SmtpSink::waitFor(int count, int timeoutMs) const {
    QElapsedTimer clock;
    clock.start();
    while (mails().size() < count) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QThread::msleep(20);
    }
    return true;
}

void SmtpSink::serve() {
    while (!m_stopping) {
        const int client = ::accept(m_listener, nullptr, nullptr);
        if (client < 0)
            return;
        converse(client);
        ::close(client);
    }
}

void SmtpSink::converse(int client) {
    auto say = [&](const char* line) { ::send(client, line, std::strlen(line), MSG_NOSIGNAL); };
    say("220 sink ESMTP\r\n");
    Mail mail;
    QByteArray pending;
    bool inData = false;
    char buffer[4096];
    for (ssize_t n; (n = ::recv(client, buffer, sizeof buffer, 0)) > 0;) {
        pending.append(buffer, n);
        for (qsizetype end; (end = pending.indexOf("\r\n")) >= 0;) {
            const QByteArray line = pending.left(end);
            pending.remove(0, end + 2);
            if (inData) {
                if (line == ".") {
                    inData = false;
                    QMutexLocker hold(&m_lock);
                    m_mails << mail;
                    mail = {};
                    say("250 queued\r\n");
                } else {
                    mail.text += line + "\r\n";
                }
            } else if (line.toUpper().startsWith("MAIL FROM")) {
                mail.mailFrom = address(line);
                say("250 ok\r\n");
            } else if (line.toUpper().startsWith("RCPT TO")) {
                mail.rcptTo << address(line);
                say("250 ok\r\n");
            } else if (line.toUpper().startsWith("DATA")) {
                inData = true;
                say("354 go on\r\n");
            } else if (line.toUpper().startsWith("QUIT")) {
                say("221 bye\r\n");
                return;
            } else {
                say("250 ok\r\n");
            }
        }
    }
}
