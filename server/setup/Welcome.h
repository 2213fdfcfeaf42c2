#pragma once

#include <QString>

class Database;

// How the server reaches people by mail: set when a public address is known (the links in
// mail point there); without one, nothing is mailed.
struct MailSetup {
    QString publicUrl;
    QString mailFrom = QStringLiteral("tavlo@localhost");
    bool mails() const { return !publicUrl.isEmpty(); }
};

// What a new account starts with: a first password shown once to whoever made it, or, when
// the server mails, a password nobody knows and a mail with a link to set one.
struct FirstPassword {
    QString shown; // empty when a link is mailed
    QString hash;  // what the account keeps
};

namespace Welcome {

// Set-password links in a welcome mail last this long; a reset link asked for later, an hour.
inline constexpr int kWelcomeLinkSeconds = 7 * 24 * 3600;
inline constexpr int kResetLinkSeconds = 3600;

// The password the account starts with (hashed now, before any write waits on it).
FirstPassword prepare(const MailSetup& mail);

// Inside a write: queues the mail with a one-time link to set a password. welcome: for a new
// account; otherwise a reset asked for by an administrator.
void mailLink(Database& db, const MailSetup& mail, qint64 userSys, bool welcome);

} // namespace Welcome
