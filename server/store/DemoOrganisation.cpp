#include "DemoOrganisation.h"

#include "Database.h"
#include "PasswordHash.h"
#include <QDateTime>

namespace DemoOrganisation {
namespace {

const char* const kFirst[] = {
    "Ann",   "Bob",  "Carol", "Dave",   "Erin",  "Frank",  "Grace", "Hugo",  "Iris",
    "Jack",  "Kara", "Liam",  "Mona",   "Nils",  "Olga",   "Paul",  "Quinn", "Rosa",
    "Sam",   "Tara", "Uma",   "Victor", "Wendy", "Xavier", "Yara",  "Zack",  "Alma",
    "Boris", "Cleo", "Dan",   "Elsa",   "Finn",  "Gina",   "Hank",  "Ines",  "Jon",
    "Kim",   "Leo",  "Maya",  "Ned",    "Opal",  "Pete",   "Rita",  "Stan",  "Tess"};
const char* const kLast[] = {
    "Lee",       "Marsh",   "Nolan",  "Ortiz",  "Price",  "Quist",  "Reyes",  "Stone",  "Turner",
    "Underwood", "Vance",   "Walsh",  "Young",  "Zimmer", "Abbott", "Baker",  "Carter", "Dalton",
    "Ellis",     "Foster",  "Garcia", "Hayes",  "Irwin",  "Jensen", "Keller", "Lopez",  "Moore",
    "Nash",      "O'Brien", "Parker", "Quinn",  "Russo",  "Shaw",   "Tate",   "Usher",  "Vega",
    "Ward",      "Xu",      "Yates",  "Zeller", "Adler",  "Brandt", "Cole",   "Dunn",   "Eaton"};
const char* const kPositions[] = {"Sales", "Support", "Engineer", "Manager", "Accounts"};

constexpr int kPeople = 45; // 40 in the main organisation, 3 with chat off, 2 disabled
constexpr qint64 kFirstContact = 1001;
constexpr qint64 kFirstUser = 5001;

struct DemoUser {
    int person; // index into the people
    const char* name;
    bool removed;
    std::initializer_list<int> rights;
};

const DemoUser kUsers[] = {
    {0, "ann", false, {10000000, 10000016}}, // administrator
    {1, "bob", false, {10000016}},           // may change others' status
    {2, "carol", false, {}},
    {3, "dave", true, {}}, // account removed
    {4, "erin", false, {}},
    {5, "frank", false, {}},
    {6, "grace", false, {}},
    {40, "hana", false, {}}, // organisation with chat disabled
    {43, "ivo", false, {}},  // organisation disabled
};

qint64 organisationOf(int person) {
    return person < 40 ? 1 : (person < 43 ? 2 : 3);
}

QString stamp(const QDateTime& moment) {
    return moment.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

void createReferenceData(Database& db) {
    const QList<QPair<int, QString>> colors = {{1, "00C000"}, {2, "FFFF00"}, {3, "C00000"},
                                               {4, "8080FF"}, {5, "FF8000"}, {6, "C000C0"},
                                               {7, "00C0C0"}, {8, "808080"}};
    for (const auto& [sys, code] : colors)
        db.exec("INSERT INTO color (colorsys, colorcode) VALUES (?, ?)", {sys, code});
    struct Status {
        int sys;
        const char* text;
        int color;
        int order;
    };
    const Status statuses[] = {{3, "In", 1, 1},           {6, "Unavailable", 2, 2},
                               {8, "Out", 3, 3},          {1, "At Lunch", 5, 4},
                               {2, "In a Meeting", 4, 5}, {4, "On Vacation", 6, 6},
                               {5, "Sick", 8, 7},         {7, "Travelling", 7, 8}};
    for (const auto& s : statuses)
        db.exec("INSERT INTO status (statussys, organizationsys, statustext, colorsys, "
                "picturelocation, sortorder) VALUES (?, NULL, ?, ?, ?, ?)",
                {s.sys, QString::fromLatin1(s.text), s.color,
                 QStringLiteral("status/%1.png").arg(s.sys), s.order});
    db.exec(
        "INSERT INTO organization (organizationsys, name, description, address1, disabled, "
        "chatdisabled) VALUES (1, 'Norvane Demo', 'The demo organisation', '1 Main Street', 0, 0), "
        "(2, 'Harbour Office', 'Chat is switched off here', '5 Quay Road', 0, 1), "
        "(3, 'Closed Branch', 'Disabled organisation', '9 Old Lane', 1, 0)");
    db.exec("INSERT INTO location (organizationlocationsys, organizationsys, locationname) VALUES "
            "(1, 1, 'Main Office'), (2, 1, 'Warehouse')");
    db.exec("INSERT INTO grp (groupsys, organizationsys, parentsys, childsys, name, description) "
            "VALUES (1, 1, 0, 0, 'Sales', 'Sales team'), (2, 1, 0, 0, 'Support', 'Help desk'), "
            "(3, 1, 0, 0, 'Engineering', 'Builders')");
    db.exec("INSERT INTO versioninfo (versionsys, versionstring, major, minor, revision, ftpsite, "
            "ftpdirectory, ftpfile, ftpuser, ftppassword) VALUES (1, '1.0.0', 1, 0, 0, "
            "'127.0.0.1', '/updates', 'TavloSetup.exe', 'update', 'update')");
}

void createPeople(Database& db) {
    const QDateTime today(QDate::currentDate(), QTime(0, 0));
    const int statusCycle[] = {3, 3, 3, 6, 8, 1, 2, 3, 4, 8, 5, 7, 3};
    for (int i = 0; i < kPeople; ++i) {
        const int status = statusCycle[i % 13];
        QVariant returning;
        if (status != 3 && i % 4 != 0)
            returning = stamp(today.addDays(i % 9).addSecs(3600 * (8 + i % 10) + 1800 * (i % 2)));
        const bool consent = i % 3 == 0;
        db.exec(
            "INSERT INTO contact (contactsys, organizationsys, organizationlocationsys, "
            "firstname, lastname, phone, fax, ext, position, emailaddress, picturelocation, "
            "cell, homephone, homeaddress, homecity, homestate, homezip, homeemail, hiredate, "
            "dateadded, tooltip, showhomeinfo, statussys, comment, returnat, chatstatus) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
            {kFirstContact + i,
             organisationOf(i),
             i < 40 ? QVariant(1 + i % 2) : QVariant(),
             QString::fromLatin1(kFirst[i]),
             QString::fromLatin1(kLast[i]),
             QStringLiteral("555%1").arg(1000000 + i * 7919 % 1000000, 7, 10, QLatin1Char('0')),
             QStringLiteral("5550000%1").arg(100 + i),
             QString::number(200 + i),
             QString::fromLatin1(kPositions[i % 5]),
             QStringLiteral("%1@demo.example").arg(QString::fromLatin1(kFirst[i]).toLower()),
             QStringLiteral("pictures/p%1.png").arg(kFirstContact + i),
             QStringLiteral("555-2%1").arg(i, 3, 10, QLatin1Char('0')),
             i % 2 ? QVariant(QStringLiteral("555-9%1").arg(i, 3, 10, QLatin1Char('0')))
                   : QVariant(),
             QStringLiteral("%1 Elm Street").arg(10 + i),
             QStringLiteral("Springfield"),
             QStringLiteral("IL"),
             QStringLiteral("62701"),
             QStringLiteral("%1@home.example").arg(QString::fromLatin1(kFirst[i]).toLower()),
             QStringLiteral("3/%1/2015").arg(1 + i % 28),
             QStringLiteral("1/2/2020"),
             QStringLiteral("Ext %1").arg(200 + i),
             consent ? 1 : 0,
             status,
             status == 3
                 ? QVariant()
                 : QVariant(i % 2 ? QStringLiteral("Back soon") : QStringLiteral("Client visit")),
             returning,
             i % 5 == 0 ? 1 : 0});
        if (i < 40)
            db.exec("INSERT INTO contactgroup (groupsys, contactsys) VALUES (?, ?)",
                    {1 + i % 3, kFirstContact + i});
    }
}

void createUsers(Database& db, const QString& passwordHash) {
    for (size_t n = 0; n < std::size(kUsers); ++n) {
        const DemoUser& u = kUsers[n];
        const qint64 userSys = kFirstUser + static_cast<qint64>(n);
        db.exec("INSERT INTO users (usersys, contactsys, username, passwordhash, removed) VALUES "
                "(?, ?, ?, ?, ?)",
                {userSys, kFirstContact + u.person, QString::fromLatin1(u.name), passwordHash,
                 u.removed ? 1 : 0});
        for (int right : u.rights)
            db.exec("INSERT INTO usersecurity (usersys, securityobjectsys) VALUES (?, ?)",
                    {userSys, right});
    }
    // Friends of ann and bob; notes for ann, read and unread.
    for (int friendIndex : {1, 2, 7, 12})
        db.exec("INSERT INTO friend (usersys, contactsys) VALUES (?, ?)",
                {kFirstUser, kFirstContact + friendIndex});
    db.exec("INSERT INTO friend (usersys, contactsys) VALUES (?, ?)",
            {kFirstUser + 1, kFirstContact});
    const QString now = stamp(QDateTime::currentDateTime());
    db.exec("INSERT INTO note (notesys, contactsys, enteredbysys, notetext, private, dateentered, "
            "dateread) VALUES (1, ?, ?, 'Call the printer company back.', 0, ?, NULL), "
            "(2, ?, ?, 'Lunch on Friday?', 1, ?, NULL), (3, ?, ?, 'Report filed.', 0, ?, ?)",
            {kFirstContact, kFirstContact + 1, now, kFirstContact, kFirstContact + 2, now,
             kFirstContact, kFirstContact + 1, now, now});
}

QStringList signIns() {
    return {QStringLiteral("demo sign-in: ann / demo (administrator, may change anyone's status)"),
            QStringLiteral("demo sign-in: bob / demo (may change anyone's status)"),
            QStringLiteral("demo sign-in: carol / demo (no rights)"),
            QStringLiteral("demo sign-in: dave / demo (account removed)"),
            QStringLiteral("demo sign-in: hana / demo (organisation with chat disabled)"),
            QStringLiteral("demo sign-in: ivo / demo (organisation disabled)")};
}

} // namespace

QStringList Create(Database& db) {
    db.createSchema();
    QSqlQuery done = db.exec(QStringLiteral("SELECT value FROM meta WHERE name = 'demo'"));
    if (done.next())
        return signIns();
    done.finish();
    const QString hash = PasswordHash::hash(QStringLiteral("demo"));
    db.write([&] {
        createReferenceData(db);
        createPeople(db);
        createUsers(db, hash);
        db.exec(QStringLiteral("INSERT INTO meta (name, value) VALUES ('demo', '1')"));
    });
    if (db.isPostgres())
        db.syncSequences();
    return signIns();
}

} // namespace DemoOrganisation
