#pragma once

#include <QString>
#include <QStringList>

class Database;

// Mail waiting to go, and its delivery by SMTP.
namespace Outbox {

// One line a mail: key, queued, sent or "waiting", to, subject.
QStringList List(Database& db);

// Sends every waiting mail through the SMTP server ("smtp://host:port"); a mail that fails
// stays waiting with its error. Returns how many went.
int DeliverWaiting(Database& db, const QString& smtpUrl);

} // namespace Outbox
