#pragma once

#include "Welcome.h"
#include <QString>

class Database;

// A person as an administrator enters them. Group and location are names in the
// organisation, either may be empty.
struct PersonInput {
    QString first;
    QString last;
    QString user;
    QString email;
    QString ext;
    QString group;
    QString location;
    bool admin = false;
};

// A person just added: their keys, and the first password when no link was mailed.
struct AddedPerson {
    qint64 contactSys = 0;
    qint64 userSys = 0;
    QString user;
    QString password; // empty: a set-password mail is queued
};

// What a user may do beyond their own status.
struct Rights {
    bool administrator = false; // the web administration
    bool othersStatus = false;  // change anyone's status
};

// The people of an organisation and their accounts. Each change is one transaction; bad input
// throws BadInput and changes nothing.
namespace People {

inline constexpr qint64 kAdministratorRight = 10000000;
inline constexpr qint64 kOthersStatusRight = 10000016;

// The fields cleaned and checked by themselves (the store is not asked).
PersonInput checked(const PersonInput& input);
// Inside a write: adds a checked person with their account; the user name must be free (any
// case), the group and location the organisation's.
AddedPerson insert(Database& db, qint64 organizationSys, const PersonInput& person,
                   const QString& passwordHash);
// Checks and adds one person; with mail, queues their set-password mail.
AddedPerson add(Database& db, qint64 organizationSys, const PersonInput& input,
                const MailSetup& mail);
// Changes a person's name, address, extension and location (the user name stays).
void edit(Database& db, qint64 organizationSys, qint64 contactSys, const PersonInput& input);

// The account of a user name (any case), removed or not; BadInput when there is none.
qint64 findUser(Database& db, const QString& userName);
// The account of a person of the organisation; BadInput when they have none.
qint64 userOfContact(Database& db, qint64 organizationSys, qint64 contactSys);
// The account can't sign in any more and its sessions end; the person stays on the board and
// in the history.
void disable(Database& db, qint64 userSys);
// As disable, and the person is gone from the board (kept for the history).
void remove(Database& db, qint64 userSys);
void setRights(Database& db, qint64 userSys, const Rights& rights);

} // namespace People
