#include "Schema.h"

namespace Schema {
namespace {

struct Table {
    const char* name;
    const char* columns;
};

// Keys are plain integers handed out by the key reservation (GetSysVB), as the client expects.
const Table kTables[] = {
    {"meta", "name TEXT PRIMARY KEY, value TEXT NOT NULL"},
    {"sysnumber", "word TEXT PRIMARY KEY, next_sys INTEGER NOT NULL"},
    {"color", "colorsys INTEGER PRIMARY KEY, colorcode TEXT NOT NULL"},
    {"organization",
     "organizationsys INTEGER PRIMARY KEY, name TEXT NOT NULL, description TEXT, address1 TEXT, "
     "disabled INTEGER NOT NULL DEFAULT 0, chatdisabled INTEGER NOT NULL DEFAULT 0"},
    {"location", "organizationlocationsys INTEGER PRIMARY KEY, organizationsys INTEGER NOT NULL, "
                 "locationname TEXT NOT NULL"},
    {"status", "statussys INTEGER PRIMARY KEY, organizationsys INTEGER, statustext TEXT NOT NULL, "
               "colorsys INTEGER, picturelocation TEXT, sortorder INTEGER NOT NULL DEFAULT 0"},
    {"contact",
     "contactsys INTEGER PRIMARY KEY, organizationsys INTEGER NOT NULL, "
     "organizationlocationsys INTEGER, firstname TEXT, lastname TEXT, phone TEXT, fax TEXT, "
     "ext TEXT, position TEXT, emailaddress TEXT, picturelocation TEXT, pager TEXT, cell TEXT, "
     "homephone TEXT, homeaddress TEXT, homecity TEXT, homestate TEXT, homezip TEXT, "
     "homefax TEXT, homeemail TEXT, hiredate TEXT, dateadded TEXT, tooltip TEXT, "
     "showhomeinfo INTEGER NOT NULL DEFAULT 0, statussys INTEGER NOT NULL DEFAULT 3, "
     "comment TEXT, returnat TEXT, statussetby INTEGER, statussetat TEXT, "
     "chatstatus INTEGER NOT NULL DEFAULT 0, chatseenat TEXT, "
     "removed INTEGER NOT NULL DEFAULT 0"},
    {"users", "usersys INTEGER PRIMARY KEY, contactsys INTEGER NOT NULL, username TEXT NOT NULL "
              "UNIQUE, passwordhash TEXT NOT NULL, removed INTEGER NOT NULL DEFAULT 0"},
    {"usersecurity", "usersys INTEGER NOT NULL, securityobjectsys INTEGER NOT NULL, "
                     "PRIMARY KEY (usersys, securityobjectsys)"},
    {"grp", "groupsys INTEGER PRIMARY KEY, organizationsys INTEGER NOT NULL, parentsys INTEGER, "
            "childsys INTEGER, name TEXT NOT NULL, description TEXT"},
    {"contactgroup", "groupsys INTEGER NOT NULL, contactsys INTEGER NOT NULL, "
                     "PRIMARY KEY (groupsys, contactsys)"},
    {"friend", "usersys INTEGER NOT NULL, contactsys INTEGER NOT NULL, "
               "PRIMARY KEY (usersys, contactsys)"},
    {"note", "notesys INTEGER PRIMARY KEY, contactsys INTEGER NOT NULL, enteredbysys INTEGER, "
             "notetext TEXT NOT NULL, private INTEGER NOT NULL DEFAULT 0, dateentered TEXT NOT "
             "NULL, dateread TEXT, deleted INTEGER NOT NULL DEFAULT 0"},
    {"sessions", "sessionsys INTEGER PRIMARY KEY, salesmansys INTEGER, sessiondetails TEXT, "
                 "logindate TEXT, logoutdate TEXT, computername TEXT, ipaddress TEXT, "
                 "usersys INTEGER"},
    {"anomaly", "anomalysys INTEGER PRIMARY KEY, loggedat TEXT NOT NULL, errortext TEXT, "
                "errornumber BIGINT, procedurename TEXT, program TEXT, contactsys INTEGER, "
                "note TEXT, computername TEXT"},
    {"outbox", "mailsys INTEGER PRIMARY KEY, queuedat TEXT NOT NULL, mailto TEXT, subject TEXT, "
               "body TEXT, mailfrom TEXT, replyto TEXT, extra TEXT, sentat TEXT, lasterror TEXT"},
    {"versioninfo", "versionsys INTEGER PRIMARY KEY, versionstring TEXT, major INTEGER, "
                    "minor INTEGER, revision INTEGER, ftpsite TEXT, ftpdirectory TEXT, "
                    "ftpfile TEXT, ftpuser TEXT, ftppassword TEXT, updatesha256 TEXT"},
    {"websession", "tokenhash TEXT PRIMARY KEY, usersys INTEGER NOT NULL, lastseen TEXT NOT NULL"},
    {"resettoken", "tokenhash TEXT PRIMARY KEY, usersys INTEGER NOT NULL, expires TEXT NOT NULL, "
                   "used INTEGER NOT NULL DEFAULT 0"},
    // A reset link waiting for the recovery mail to that address (an hour at most).
    {"pendinglink", "address TEXT PRIMARY KEY, link TEXT NOT NULL, expires TEXT NOT NULL"},
    // Failed sign-ins per account and per address, and when the next attempt may come (UTC).
    {"signinfailure", "key TEXT PRIMARY KEY, failures INTEGER NOT NULL, lastfailure TEXT NOT NULL, "
                      "nextallowed TEXT"},
    // Who changed whose status, when, from what to what (client or web), kept 400 days.
    {"statushistory",
     "historysys INTEGER PRIMARY KEY, contactsys INTEGER NOT NULL, changedby INTEGER, "
     "changedat TEXT NOT NULL, fromstatus INTEGER, tostatus INTEGER, fromcomment TEXT, "
     "tocomment TEXT, via TEXT NOT NULL"},
    // Read-only display tokens of the wall screens, by organisation (hashes only).
    {"walltoken",
     "tokensys INTEGER PRIMARY KEY, tokenhash TEXT NOT NULL UNIQUE, organizationsys INTEGER NOT "
     "NULL, label TEXT, createdby INTEGER, createdat TEXT NOT NULL, revokedat TEXT"},
};

// Look-ups the board, the poll and sign-in make on every call.
const char* const kIndexes[] = {
    "CREATE INDEX IF NOT EXISTS contact_board ON contact (organizationsys, lastname, firstname, "
    "contactsys)",
    "CREATE INDEX IF NOT EXISTS users_contact ON users (contactsys)",
    "CREATE INDEX IF NOT EXISTS contactgroup_contact ON contactgroup (contactsys)",
    "CREATE INDEX IF NOT EXISTS note_unread ON note (contactsys, dateread)",
    "CREATE INDEX IF NOT EXISTS websession_user ON websession (usersys)",
    "CREATE INDEX IF NOT EXISTS statushistory_when ON statushistory (changedat)",
};

} // namespace

QStringList statements(bool postgres) {
    QStringList out;
    for (const Table& table : kTables) {
        QString columns = QString::fromLatin1(table.columns);
        if (!postgres)
            columns.replace(QStringLiteral("BIGINT"), QStringLiteral("INTEGER"));
        out << QStringLiteral("CREATE TABLE IF NOT EXISTS %1 (%2)")
                   .arg(QLatin1String(table.name), columns);
    }
    for (const char* index : kIndexes)
        out << QString::fromLatin1(index);
    // Who is on chat, as each server last heard: shared by the servers on one database, and
    // kept without the cost of a durable write (lost in a crash, refilled by the next polls).
    if (postgres)
        out << QStringLiteral("CREATE UNLOGGED TABLE IF NOT EXISTS chatseen (contactsys BIGINT "
                              "PRIMARY KEY, seenat BIGINT NOT NULL)");
    return out;
}

QList<AddedColumn> addedColumns() {
    return {{QStringLiteral("contact"), QStringLiteral("chatseenat"), QStringLiteral("TEXT")},
            {QStringLiteral("contact"), QStringLiteral("removed"),
             QStringLiteral("INTEGER NOT NULL DEFAULT 0")},
            {QStringLiteral("versioninfo"), QStringLiteral("updatesha256"), QStringLiteral("TEXT")},
            {QStringLiteral("outbox"), QStringLiteral("attempts"),
             QStringLiteral("INTEGER NOT NULL DEFAULT 0")},
            {QStringLiteral("outbox"), QStringLiteral("nextattempt"), QStringLiteral("TEXT")},
            {QStringLiteral("outbox"), QStringLiteral("gaveup"),
             QStringLiteral("INTEGER NOT NULL DEFAULT 0")}};
}

QList<KeyedTable> keyedTables() {
    QList<KeyedTable> out;
    for (const Table& table : kTables) {
        const QString columns = QString::fromLatin1(table.columns);
        const qsizetype blank = columns.indexOf(QLatin1Char(' '));
        if (columns.mid(blank + 1).startsWith(QStringLiteral("INTEGER PRIMARY KEY")))
            out.append({QString::fromLatin1(table.name), columns.left(blank)});
    }
    return out;
}

QString sequenceOf(const QString& table) {
    return table + QStringLiteral("_key");
}

QStringList tables() {
    QStringList out;
    for (const Table& table : kTables)
        if (qstrcmp(table.name, "signinfailure") != 0)
            out << QString::fromLatin1(table.name);
    return out;
}

} // namespace Schema
