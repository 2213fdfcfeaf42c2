#pragma once

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <atomic>
#include <thread>

// An SMTP listener on a free loopback port that accepts whatever it is given, one connection
// after another, and keeps each mail: its envelope sender and recipients and its text.
class SmtpSink {
public:
    struct Mail {
        QByteArray mailFrom;      // the MAIL FROM address, without the brackets
        QList<QByteArray> rcptTo; // the RCPT TO addresses
        QByteArray text;          // headers and body as sent, lines ending in CR LF
    };

    SmtpSink();
    ~SmtpSink();
    SmtpSink(const SmtpSink&) = delete;
    SmtpSink& operator=(const SmtpSink&) = delete;

    int port() const { return m_port; }
    QString url() const;
    QList<Mail> mails() const;
    // Waits up to timeoutMs for at least count mails.
    bool waitFor(int count, int timeoutMs) const;

private:
    void serve();
    void converse(int client);

    int m_listener = -1;
    int m_port = 0;
    std::atomic<bool> m_stopping{false};
    mutable QMutex m_lock;
    QList<Mail> m_mails;
    std::thread m_thread;
};
