#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

class Database;

// Mail waiting to go, and its delivery by SMTP.
namespace Outbox {

// One line a mail: key, queued, sent or "waiting", to, subject.
QStringList List(Database& db);

// Sends every waiting mail that is due through the SMTP server ("smtp://host:port"), from
// mailFrom (envelope and From alike; the queued Reply-To, if any, goes along). A mail that
// fails stays waiting with its error and is tried again after a minute, then after twice as
// long each time, up to an hour; a day after it was queued it is given up. Returns how many
// went. now: the moment of the run (tests pass a later one).
int DeliverWaiting(Database& db, const QString& smtpUrl, const QString& mailFrom,
                   const QDateTime& now = QDateTime::currentDateTime());

} // namespace Outbox
