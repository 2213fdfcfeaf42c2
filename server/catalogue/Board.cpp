#include "Board.h"

#include "ChatPresence.h"
#include "RowsetFromQuery.h"
#include "store/Database.h"
#include <QDateTime>
#include <QLocale>

namespace Board {

QString ContactColumns() {
    return QStringLiteral(
        "c.contactsys AS \"ContactSys\", c.firstname AS \"FirstName\", "
        "c.lastname AS \"LastName\", u.usersys AS \"UserSys\", u.username AS \"UserName\", "
        "c.organizationsys AS \"OrganizationSys\", c.phone AS \"Phone\", c.fax AS \"Fax\", "
        "c.ext AS \"Ext\", c.position AS \"Position\", c.emailaddress AS \"EmailAddress\", "
        "c.picturelocation AS \"ContactPictureLocation\", c.pager AS \"Pager\", "
        "c.cell AS \"Cell\", "
        "CASE WHEN c.showhomeinfo = 1 THEN c.homephone END AS \"HomePhone\", "
        "CASE WHEN c.showhomeinfo = 1 THEN c.homeaddress END AS \"HomeAddress\", "
        "CASE WHEN c.showhomeinfo = 1 THEN c.homecity END AS \"HomeCity\", "
        "CASE WHEN c.showhomeinfo = 1 THEN c.homestate END AS \"HomeState\", "
        "CASE WHEN c.showhomeinfo = 1 THEN c.homezip END AS \"HomeZip\", "
        "CASE WHEN c.showhomeinfo = 1 THEN c.homefax END AS \"HomeFax\", "
        "CASE WHEN c.showhomeinfo = 1 THEN c.homeemail END AS \"HomeEMail\", "
        "c.hiredate AS \"HireDate\", c.dateadded AS \"DateAdded\", c.tooltip AS \"ToolTip\", "
        "c.showhomeinfo AS \"ShowHomeInfo\"");
}

namespace {

const QString kSelect =
    QStringLiteral("SELECT ") + ContactColumns() +
    QStringLiteral(
        ", c.organizationlocationsys AS \"OrganizationLocationSys\", s.statussys AS \"StatusSys\", "
        "s.statustext AS \"Status\", s.colorsys AS \"ColorSys\", k.colorcode AS \"ColorCode\", "
        "s.picturelocation AS \"StatusPictureLocation\", "
        "c.chatstatus AS \"ChatStatus\", "
        "c.comment AS \"comment\", c.returnat AS \"returningtext\", "
        "CASE WHEN f.contactsys IS NULL THEN 0 ELSE 1 END AS \"myfriend\" "
        "FROM contact c "
        "JOIN organization o ON o.organizationsys = c.organizationsys "
        "LEFT JOIN users u ON u.contactsys = c.contactsys AND u.removed = 0 "
        "LEFT JOIN status s ON s.statussys = c.statussys "
        "LEFT JOIN color k ON k.colorsys = s.colorsys "
        "LEFT JOIN friend f ON f.contactsys = c.contactsys AND f.usersys = ? ");

const QStringList kDateForms = {QStringLiteral("M/d/yyyy h:mm AP"),
                                QStringLiteral("M/d/yyyy h:mm:ss AP"),
                                QStringLiteral("M/d/yyyy hh:mm"),
                                QStringLiteral("M/d/yyyy H:mm"),
                                QStringLiteral("M/d/yyyy"),
                                QStringLiteral("yyyy-MM-dd hh:mm:ss"),
                                QStringLiteral("yyyy-MM-ddThh:mm:ss"),
                                QStringLiteral("yyyy-MM-dd")};
const QStringList kTimeForms = {QStringLiteral("h:mm AP"), QStringLiteral("h:mm:ss AP"),
                                QStringLiteral("H:mm"), QStringLiteral("H:mm:ss")};

QDateTime readMoment(const QString& text) {
    const QLocale c = QLocale::c();
    for (const QString& form : kDateForms) {
        const QDateTime moment = c.toDateTime(text.trimmed(), form);
        if (moment.isValid())
            return moment;
    }
    return QDateTime();
}

QTime readTime(const QString& text) {
    const QLocale c = QLocale::c();
    for (const QString& form : kTimeForms) {
        const QTime time = c.toTime(text.trimmed(), form);
        if (time.isValid())
            return time;
    }
    return QTime();
}

// Someone is on chat while their client says so and its heartbeat keeps coming.
void markOnChat(wire::Rowset& rowset) {
    const int contact = columnOf(rowset, QStringLiteral("ContactSys"));
    const int chat = columnOf(rowset, QStringLiteral("ChatStatus"));
    if (contact < 0 || chat < 0)
        return;
    auto& presence = ChatPresence::instance();
    for (auto& row : rowset.rows)
        if (row[size_t(chat)].toInt() == 1 && !presence.OnChat(row[size_t(contact)].toLongLong()))
            row[size_t(chat)] = 0;
}

} // namespace

int columnOf(const wire::Rowset& rowset, const QString& name) {
    for (size_t i = 0; i < rowset.columns.size(); ++i)
        if (rowset.columns[i].name == name)
            return int(i);
    return -1;
}

QString now() {
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

QString returningText(const QVariant& stored) {
    // Moments are stored as local wall-clock text; reading them as plain dates and times
    // keeps time zones (and their file look-ups) out of the board's hot path.
    const QString text = stored.isNull() ? QString() : stored.toString();
    const QDate date = QDate::fromString(text.left(10), Qt::ISODate);
    const QTime time = QTime::fromString(text.mid(11, 8), QStringLiteral("HH:mm:ss"));
    if (!date.isValid() || !time.isValid())
        return QStringLiteral("01/01/00 12:00AM");
    const int hour12 = time.hour() % 12 == 0 ? 12 : time.hour() % 12;
    return QStringLiteral("%1/%2/%3 %4:%5 %6")
        .arg(date.month())
        .arg(date.day())
        .arg(date.year())
        .arg(hour12)
        .arg(time.minute(), 2, 10, QLatin1Char('0'))
        .arg(time.hour() < 12 ? QStringLiteral("AM") : QStringLiteral("PM"));
}

QString storedMoment(const QVariant& date, const QVariant& time) {
    if (date.isNull())
        return QString();
    QDateTime moment = readMoment(date.toString());
    if (!moment.isValid())
        return QString();
    // A date that came without a time of day takes the separate time, if any.
    if (!time.isNull() && moment.time() == QTime(0, 0)) {
        const QTime t = readTime(time.toString());
        if (t.isValid())
            moment.setTime(t);
    }
    return moment.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

wire::Rowset people(Database& db, qint64 askingUser, const QString& where,
                    const QVariantList& values) {
    QVariantList all{askingUser};
    all += values;
    ChatPresence::instance().Swap(db);
    wire::Rowset rowset =
        ReadRowset(db,
                   kSelect + QStringLiteral("WHERE o.disabled = 0 AND c.removed = 0 AND (") +
                       where + QStringLiteral(") ORDER BY c.lastname, c.firstname, c.contactsys"),
                   all);
    for (size_t i = 0; i < rowset.columns.size(); ++i) {
        if (rowset.columns[i].name != QStringLiteral("returningtext"))
            continue;
        rowset.columns[i].type = wire::FieldType::String;
        for (auto& row : rowset.rows)
            row[i] = returningText(row[i]);
    }
    markOnChat(rowset);
    return rowset;
}

} // namespace Board
