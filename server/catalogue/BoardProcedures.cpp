// The board's lists, one person's row, status changes, friends and chat state.
#include "Board.h"
#include "Catalogue.h"
#include "ChatPresence.h"
#include "RowsetFromQuery.h"
#include "StatusChange.h"
#include "store/Database.h"

namespace {

using S = ArgShape;

// The organisation of a user's contact, or 0.
qint64 organizationOfUser(Database& db, const QVariant& userSys) {
    if (userSys.isNull())
        return 0;
    QSqlQuery q = db.exec(QStringLiteral("SELECT c.organizationsys FROM users u JOIN contact c "
                                         "ON c.contactsys = u.contactsys WHERE u.usersys = ?"),
                          {userSys});
    return q.next() ? q.value(0).toLongLong() : 0;
}

// The user whose friends a list marks: nobody in an answer made for everybody.
qint64 friendsMarkedFor(const Args& a, int i) {
    return a.caller().sharedAnswer || a.count() <= i || a.isNull(i) ? 0 : a.integer(i);
}

// Group, contact, organisation, user, location: each NULL means "any". Without an organisation
// the asking user's own is listed.
Answer getUserStatuses(Database& db, const Args& a) {
    const QVariant group = a.count() > 0 ? a.value(0) : QVariant();
    const QVariant contact = a.count() > 1 ? a.value(1) : QVariant();
    QVariant organization = a.count() > 2 ? a.value(2) : QVariant();
    const QVariant user = a.count() > 3 ? a.value(3) : QVariant();
    const QVariant location = a.count() > 4 ? a.value(4) : QVariant();
    QString where = QStringLiteral("1 = 1");
    QVariantList values;
    if (!contact.isNull()) {
        where += QStringLiteral(" AND c.contactsys = ?");
        values << contact;
    } else {
        if (organization.isNull())
            organization = organizationOfUser(db, user);
        where += QStringLiteral(" AND c.organizationsys = ?");
        values << organization;
    }
    if (!group.isNull()) {
        where += QStringLiteral(
            " AND c.contactsys IN (SELECT contactsys FROM contactgroup WHERE groupsys = ?)");
        values << group;
    }
    if (!location.isNull()) {
        where += QStringLiteral(" AND c.organizationlocationsys = ?");
        values << location;
    }
    return Board::people(db, friendsMarkedFor(a, 3), where, values);
}

// Searches and lists without an organisation stay inside the caller's own.
qint64 ownOrganization(const Args& a) {
    return a.caller().organizationSys;
}

Answer getMyFriendsList(Database& db, const Args& a) {
    return Board::people(db, a.integer(0),
                         QStringLiteral("c.contactsys IN (SELECT contactsys FROM friend WHERE "
                                        "usersys = ?)"),
                         {a.value(0)});
}

// The company list: the people of the caller's organisation.
Answer getCompanyPeople(Database& db, const Args& a) {
    return Board::people(db, friendsMarkedFor(a, 0), QStringLiteral("c.organizationsys = ?"),
                         {ownOrganization(a)});
}

// With a user: the people. Without: the organisation itself, the only one the caller sees.
Answer getCompanyList(Database& db, const Args& a) {
    if (a.count() == 1)
        return getCompanyPeople(db, a);
    QSqlQuery q = db.exec(
        QStringLiteral(
            "SELECT organizationsys AS \"OrganizationSys\", name AS \"Name\", description AS "
            "\"Description\", address1 AS \"Address1\" FROM organization WHERE disabled = 0 "
            "AND organizationsys = ? ORDER BY name, organizationsys"),
        {ownOrganization(a)});
    return RowsetFromQuery(q);
}

Answer searchContacts(Database& db, const Args& a) {
    QString where = QStringLiteral("1 = 1");
    QVariantList values;
    if (!a.isNull(0) && !a.text(0).isEmpty()) {
        where += QStringLiteral(" AND (LOWER(c.lastname) LIKE LOWER(?) OR LOWER(c.firstname) "
                                "LIKE LOWER(?) OR LOWER(c.lastname || ', ' || c.firstname) LIKE "
                                "LOWER(?))");
        values << a.text(0) << a.text(0) << a.text(0);
    }
    where += QStringLiteral(" AND c.organizationsys = ?");
    values << ownOrganization(a);
    if (!a.isNull(2) && !a.text(2).isEmpty()) {
        where += QStringLiteral(" AND c.ext LIKE ?");
        values << a.text(2);
    }
    return Board::people(db, friendsMarkedFor(a, 3), where, values);
}

Answer getContactStatus(Database& db, const Args& a) {
    QSqlQuery q = db.exec(
        QStringLiteral("SELECT s.statussys AS \"StatusSys\", s.statustext AS \"Status\", "
                       "s.colorsys AS \"ColorSys\", k.colorcode AS \"ColorCode\", "
                       "s.picturelocation AS \"StatusPictureLocation\", c.comment AS \"comment\" "
                       "FROM contact c LEFT JOIN status s ON s.statussys = c.statussys "
                       "LEFT JOIN color k ON k.colorsys = s.colorsys WHERE c.contactsys = ?"),
        {a.value(0)});
    return RowsetFromQuery(q);
}

Answer contactColumns(Database& db, const QString& where, const QVariantList& values) {
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT ") + Board::ContactColumns() +
                    QStringLiteral(" FROM contact c LEFT JOIN users u ON u.contactsys = "
                                   "c.contactsys AND u.removed = 0 WHERE ") +
                    where + QStringLiteral(" ORDER BY c.lastname, c.firstname, c.contactsys"),
                values);
    return RowsetFromQuery(q);
}

Answer setStatus(Database& db, const Args& a) {
    StatusChange::Apply(db,
                        {a.integer(0), a.integer(1), Board::storedMoment(a.value(2), a.value(3)),
                         a.value(4), a.integer(5), QStringLiteral("client")});
    return std::nullopt;
}

// The friend is named by contact key (check box) or by user key (menu); the two key ranges
// never overlap, so a contact key is tried first. Adding a friend twice changes nothing.
Answer addFriend(Database& db, const Args& a) {
    db.write([&] {
        db.exec(QStringLiteral(
                    "INSERT INTO friend (usersys, contactsys) SELECT ?, contactsys FROM "
                    "(SELECT contactsys FROM contact WHERE contactsys = ? UNION ALL "
                    "SELECT contactsys FROM users WHERE usersys = ?) named WHERE 1 = 1 LIMIT 1 "
                    "ON CONFLICT DO NOTHING"),
                {a.value(0), a.value(1), a.value(1)});
    });
    return std::nullopt;
}

Answer removeFriend(Database& db, const Args& a) {
    db.write([&] {
        db.exec(QStringLiteral("DELETE FROM friend WHERE usersys = ? AND contactsys = ?"),
                {a.value(0), a.value(1)});
    });
    return std::nullopt;
}

// The heartbeat is kept in memory; the database is written only when the client's chat state
// turns, so a poll in the usual case writes nothing.
Answer updateChatStatus(Database& db, const Args& a) {
    const int online = a.integer(1) == 0 ? 0 : 1;
    auto& presence = ChatPresence::instance();
    // Coming back after silence changes what boards show, though nothing is written.
    if (online && presence.Seen(a.integer(0)))
        db.bumpVersion();
    else if (!online)
        presence.Forget(a.integer(0));
    // Read first: in the usual case the state hasn't turned, and a read takes no write lock.
    QSqlQuery stored = db.exec(
        QStringLiteral("SELECT chatstatus FROM contact WHERE contactsys = ?"), {a.value(0)});
    const bool turned = stored.next() && stored.value(0).toInt() != online;
    stored.finish();
    if (turned)
        db.write([&] {
            db.exec(QStringLiteral("UPDATE contact SET chatstatus = ?, chatseenat = ? WHERE "
                                   "contactsys = ? AND chatstatus <> ?"),
                    {online, Board::now(), a.value(0), online});
        });
    presence.Swap(db);
    return std::nullopt;
}

} // namespace

void registerBoardProcedures() {
    auto& c = Catalogue::instance();
    using R = Role;
    c.add(QStringLiteral("tl_GetUserStatuses"),
          {{S::IntOrNull, S::IntOrNull, S::IntOrNull, S::IntOrNull, S::IntOrNull},
           {S::IntOrNull, S::IntOrNull, S::IntOrNull, S::IntOrNull},
           {S::IntOrNull, S::Int}},
          getUserStatuses,
          {false, {R::OwnGroup, R::Colleague, R::OwnOrganization, R::SelfUser, R::OwnLocation}});
    c.add(QStringLiteral("tl_GetMyFriendsList"), {{S::Int, S::IntOrNull}}, getMyFriendsList,
          {false, {R::SelfUser, R::OwnOrganization}});
    c.add(QStringLiteral("tl_SearchContacts"),
          {{S::TextOrNull, S::IntOrNull, S::TextOrNull, S::IntOrNull}}, searchContacts,
          {false, {R::Any, R::Any, R::Any, R::SelfUser}});
    c.add(QStringLiteral("tl_GetContactStatus"), {{S::Int}}, getContactStatus,
          {false, {R::Colleague}});
    c.add(QStringLiteral("tl_GetContactInformation"), {{S::Int}},
          [](Database& db, const Args& a) {
              return contactColumns(db, QStringLiteral("c.contactsys = ?"), {a.value(0)});
          },
          {false, {R::Colleague}});
    c.add(QStringLiteral("tl_GetContactList"), {{S::Int}},
          [](Database& db, const Args& a) {
              return contactColumns(db, QStringLiteral("c.organizationsys = ?"), {a.value(0)});
          },
          {false, {R::OwnOrganization}});
    c.add(QStringLiteral("tl_SetStatus"),
          {{S::Int, S::Int, S::TextOrNull, S::TextOrNull, S::TextOrNull, S::Int}}, setStatus,
          {false, {R::StatusOf, R::Any, R::Any, R::Any, R::Any, R::SelfUser}});
    c.add(QStringLiteral("tl_MyFriendsAdd"), {{S::Int, S::Int}}, addFriend,
          {false, {R::SelfUser, R::FriendToAdd}});
    c.add(QStringLiteral("tl_MyFriendsRemove"), {{S::Int, S::Int}}, removeFriend,
          {false, {R::SelfUser}});
    c.add(QStringLiteral("tl_UpdateChatStatus"), {{S::Int, S::Int}}, updateChatStatus,
          {false, {R::SelfContact}});
    c.add(QStringLiteral("tl_GetCompanyList"), {{S::Int}, {}}, getCompanyList,
          {false, {R::SelfUser}});
}
