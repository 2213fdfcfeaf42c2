// The rights check of one argument: a signed-in person names only themselves, their own
// organisation's people and lists, and, with the right, colleagues' statuses.
#include "Catalogue.h"
#include "store/Database.h"

namespace {

bool exists(Database& db, const QString& sql, const QVariantList& values) {
    return db.exec(sql, values).next();
}

bool isColleague(Database& db, const Caller& caller, qint64 contactSys) {
    return exists(db,
                  QStringLiteral("SELECT 1 FROM contact WHERE contactsys = ? AND "
                                 "organizationsys = ?"),
                  {contactSys, caller.organizationSys});
}

// A key that names nobody reads as nothing and changes nothing, so there is nothing to keep
// from the caller.
bool isNobody(Database& db, qint64 contactSys) {
    return !exists(db, QStringLiteral("SELECT 1 FROM contact WHERE contactsys = ?"), {contactSys});
}

bool isColleagueOrNobody(Database& db, const Caller& caller, qint64 contactSys) {
    return isColleague(db, caller, contactSys) || isNobody(db, contactSys);
}

bool allowed(Database& db, Role role, const Args& a, int i) {
    const Caller& caller = a.caller();
    const qint64 key = a.integer(i);
    switch (role) {
    case Role::Any:
        return true;
    case Role::SelfUser:
        return key == caller.userSys;
    case Role::SelfContact:
        return key == caller.contactSys || isNobody(db, key);
    case Role::Colleague:
        return key == caller.contactSys || isColleagueOrNobody(db, caller, key);
    case Role::StatusOf:
        return key == caller.contactSys ||
               (caller.mayChangeOthersStatus && isColleague(db, caller, key));
    case Role::FriendToAdd: // a contact key is tried first, as the procedure does
        return exists(db,
                      QStringLiteral("SELECT 1 FROM contact c WHERE c.organizationsys = ? AND "
                                     "(c.contactsys = ? OR (NOT EXISTS (SELECT 1 FROM contact "
                                     "WHERE contactsys = ?) AND c.contactsys = (SELECT "
                                     "contactsys FROM users WHERE usersys = ?)))"),
                      {caller.organizationSys, key, key, key});
    case Role::OwnOrganization:
        return key == caller.organizationSys;
    case Role::OwnGroup:
        return exists(
            db, QStringLiteral("SELECT 1 FROM grp WHERE groupsys = ? AND organizationsys = ?"),
            {key, caller.organizationSys});
    case Role::OwnLocation:
        return exists(db,
                      QStringLiteral("SELECT 1 FROM location WHERE organizationlocationsys = ? "
                                     "AND organizationsys = ?"),
                      {key, caller.organizationSys});
    case Role::OwnSessionRow:
        return exists(db,
                      QStringLiteral("SELECT 1 FROM sessions WHERE sessionsys = ? AND usersys = ?"),
                      {key, caller.userSys});
    }
    return false;
}

QString roleWords(Role role) {
    switch (role) {
    case Role::SelfUser:
        return QStringLiteral("a user other than the signed-in one");
    case Role::SelfContact:
        return QStringLiteral("a person other than the signed-in one");
    case Role::Colleague:
    case Role::FriendToAdd:
        return QStringLiteral("a person outside the signed-in person's organisation");
    case Role::StatusOf:
        return QStringLiteral("another person's status without the right to change it");
    case Role::OwnOrganization:
        return QStringLiteral("another organisation");
    case Role::OwnGroup:
        return QStringLiteral("a group of another organisation");
    case Role::OwnLocation:
        return QStringLiteral("a location of another organisation");
    case Role::OwnSessionRow:
        return QStringLiteral("a session of another user");
    case Role::Any:
        break;
    }
    return {};
}

} // namespace

void CheckRole(Database& db, Role role, const Args& args, int i, const QString& procedure) {
    if (allowed(db, role, args, i))
        return;
    throw Refusal(QStringLiteral("%1 by user %2 names %3 (argument %4: %5)")
                      .arg(procedure)
                      .arg(args.caller().userSys)
                      .arg(roleWords(role))
                      .arg(i + 1)
                      .arg(args.integer(i)));
}
