// Sign-in, sessions, rights, key reservation, the version check and error reports.
#include "Board.h"
#include "Catalogue.h"
#include "PasswordCheck.h"
#include "RowsetFromQuery.h"
#include "store/Database.h"
#include <QHash>

namespace {

using S = ArgShape;

const QString kSignInColumns = QStringLiteral(
    "SELECT CASE WHEN u.removed = 0 THEN 1 ELSE 0 END AS \"ActiveUser\", "
    "CASE WHEN o.disabled = 0 THEN 1 ELSE 0 END AS \"ActiveOrganization\", "
    "o.chatdisabled AS \"ChatDisabled\", c.contactsys AS \"ContactSys\", "
    "u.usersys AS \"UserSys\", u.username AS \"UserName\", c.chatstatus AS \"ChatStatus\", "
    "c.organizationlocationsys AS \"OrganizationLocationSys\", "
    "o.organizationsys AS \"OrganizationSys\", o.name AS \"Name\", "
    "o.description AS \"Description\", o.address1 AS \"Address1\", "
    "c.firstname AS \"FirstName\", c.lastname AS \"LastName\", c.phone AS \"Phone\", "
    "c.fax AS \"Fax\", c.ext AS \"Ext\", c.position AS \"Position\", "
    "c.emailaddress AS \"EmailAddress\", c.picturelocation AS \"ContactPictureLocation\", "
    "c.pager AS \"Pager\", c.cell AS \"Cell\", c.hiredate AS \"HireDate\", "
    "c.dateadded AS \"DateAdded\", c.tooltip AS \"ToolTip\", c.showhomeinfo AS \"ShowHomeInfo\" "
    "FROM users u JOIN contact c ON c.contactsys = u.contactsys "
    "JOIN organization o ON o.organizationsys = c.organizationsys WHERE u.usersys = ?");

// One row when the name and password match (even for a removed account or a disabled
// organisation, which the row says), no row otherwise. An active account in an enabled
// organisation gets a session.
Answer loginCheck(Database& db, const Args& a) {
    const PasswordCheck check = PasswordCheck::Run(db, a.text(0), a.text(1), a.caller().peer);
    if (check.outcome == PasswordCheck::Outcome::Wait)
        throw Refusal(check.waitText(), 429);
    QSqlQuery row = db.exec(kSignInColumns, {check.userSys});
    wire::Rowset rowset = RowsetFromQuery(row);
    if (!rowset.rows.empty() && rowset.rows.front()[0].toInt() == 1 &&
        rowset.rows.front()[1].toInt() == 1)
        a.caller().openSessionFor = check.userSys;
    return rowset;
}

Answer openSession(Database& db, const Args& a) {
    db.write([&] {
        db.exec(
            QStringLiteral("INSERT INTO sessions (sessionsys, salesmansys, sessiondetails, "
                           "logindate, computername, ipaddress, usersys) VALUES "
                           "(?, ?, ?, ?, ?, ?, ?)"),
            {a.value(0), a.value(1), a.value(2), Board::now(), a.value(4), a.value(5), a.value(6)});
    });
    return std::nullopt;
}

// The sign-out: the gateway session ends with it.
Answer closeSession(Database& db, const Args& a) {
    a.caller().endSession = true;
    db.write([&] {
        db.exec(QStringLiteral("UPDATE sessions SET logoutdate = ? WHERE sessionsys = ?"),
                {Board::now(), a.value(0)});
    });
    return std::nullopt;
}

// The table and key column behind each key word, so a fresh counter starts past the keys
// already used.
const QHash<QString, QPair<QString, QString>>& keyTables() {
    static const QHash<QString, QPair<QString, QString>> tables = {
        {QStringLiteral("contact"), {QStringLiteral("contact"), QStringLiteral("contactsys")}},
        {QStringLiteral("user"), {QStringLiteral("users"), QStringLiteral("usersys")}},
        {QStringLiteral("organization"),
         {QStringLiteral("organization"), QStringLiteral("organizationsys")}},
        {QStringLiteral("status"), {QStringLiteral("status"), QStringLiteral("statussys")}},
        {QStringLiteral("note"), {QStringLiteral("note"), QStringLiteral("notesys")}},
        {QStringLiteral("organizationlocation"),
         {QStringLiteral("location"), QStringLiteral("organizationlocationsys")}},
        {QStringLiteral("color"), {QStringLiteral("color"), QStringLiteral("colorsys")}},
        {QStringLiteral("session"), {QStringLiteral("sessions"), QStringLiteral("sessionsys")}},
        {QStringLiteral("preference"), {}},
        {QStringLiteral("statuscolor"), {}},
        {QStringLiteral("download"), {}},
        {QStringLiteral("securitygroup"), {}},
        {QStringLiteral("securityobject"), {}},
        {QStringLiteral("contactgroup"), {}},
        {QStringLiteral("organizationgroup"), {}},
        {QStringLiteral("usercontact"), {}},
        {QStringLiteral("userorganization"), {}},
        {QStringLiteral("image"), {}}};
    return tables;
}

// Reserves the next key of a table word; each call gets a key no other call gets.
Answer getSysVB(Database& db, const Args& a) {
    const QString word = a.text(0).trimmed().toLower();
    wire::Rowset rowset;
    rowset.columns.push_back({QStringLiteral("NextAvailableSys"),
                              QStringLiteral("NextAvailableSys"),
                              1,
                              wire::FieldType::I4,
                              {},
                              4,
                              true});
    const auto table = keyTables().constFind(word);
    if (table == keyTables().constEnd())
        return rowset; // no such word: no row
    // One statement takes the number, so writers side by side never get the same one.
    const qint64 key = db.write([&] {
        const QString take = QStringLiteral(
            "UPDATE sysnumber SET next_sys = next_sys + 1 WHERE word = ? RETURNING next_sys - 1");
        QSqlQuery taken = db.exec(take, {word});
        if (taken.next())
            return taken.value(0).toLongLong();
        taken.finish();
        const qint64 first = table->first.isEmpty() ? 1 : db.nextKey(table->first, table->second);
        db.exec(QStringLiteral(
                    "INSERT INTO sysnumber (word, next_sys) VALUES (?, ?) ON CONFLICT DO NOTHING"),
                {word, first});
        QSqlQuery retaken = db.exec(take, {word});
        return retaken.next() ? retaken.value(0).toLongLong() : first;
    });
    rowset.rows.push_back({QVariant(key)});
    return rowset;
}

Answer getUserSecurity(Database& db, const Args& a) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT securityobjectsys AS \"SecurityObjectSys\" FROM "
                                         "usersecurity WHERE usersys = ? ORDER BY 1"),
                          {a.value(0)});
    return RowsetFromQuery(q);
}

Answer versionCheck(Database& db, const Args&) {
    QSqlQuery q = db.exec(QStringLiteral(
        "SELECT versionstring AS \"VersionString\", major AS \"VersionMajor\", minor AS "
        "\"VersionMinor\", revision AS \"VersionRevision\", ftpsite AS \"FTPSite\", ftpdirectory "
        "AS \"FTPDirectory\", ftpfile AS \"FTPUpdateFileName\", ftpuser AS \"FTPUserName\", "
        "ftppassword AS \"FTPPassword\", updatesha256 AS \"UpdateSha256\" FROM versioninfo ORDER "
        "BY versionsys DESC"));
    return RowsetFromQuery(q);
}

Answer logAnomaly(Database& db, const Args& a) {
    db.write([&] {
        const qint64 key = db.nextKey(QStringLiteral("anomaly"), QStringLiteral("anomalysys"));
        db.exec(QStringLiteral("INSERT INTO anomaly (anomalysys, loggedat, errortext, errornumber, "
                               "procedurename, program, contactsys, note, computername) VALUES "
                               "(?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                {key, Board::now(), a.value(0), a.value(1), a.value(2), a.value(3), a.value(4),
                 a.value(5), a.value(6)});
    });
    return std::nullopt;
}

} // namespace

void registerSignInProcedures() {
    auto& c = Catalogue::instance();
    const Access anyone{true, {}};
    using R = Role;
    c.add(QStringLiteral("LoginCheck"), {{S::Text, S::Text}}, loginCheck, anyone);
    c.add(QStringLiteral("<sessions insert>"),
          {{S::Int, S::Int, S::Text, S::GetDate, S::Text, S::Text, S::Int}}, openSession,
          {false, {R::Any, R::SelfContact, R::Any, R::Any, R::Any, R::Any, R::SelfUser}});
    c.add(QStringLiteral("<sessions update>"), {{S::Int}}, closeSession,
          {false, {R::OwnSessionRow}});
    c.add(QStringLiteral("GetSysVB"), {{S::Text}}, getSysVB);
    c.add(QStringLiteral("tl_GetUserSecurity"), {{S::Int}}, getUserSecurity,
          {false, {R::SelfUser}});
    c.add(QStringLiteral("tl_VersionCheck"), {{}}, versionCheck, anyone);
    c.add(QStringLiteral("LogAnomaly"),
          {{S::Text, S::Int, S::Text, S::Text, S::Int, S::Text, S::Text}}, logAnomaly, anyone);
}
