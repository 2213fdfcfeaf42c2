#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

// Reads the tray program's commands from standard input, one line each, without blocking the
// event loop; tells when the input ends (the tray program closed it or ended).
class CommandReader : public QObject {
    Q_OBJECT
public:
    CommandReader();

signals:
    void lineReceived(const QByteArray& line);
    void ended();

private:
    void readAvailable();

    QSocketNotifier m_notifier;
    QByteArray m_pending;
};
