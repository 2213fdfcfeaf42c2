#include "BoardJson.h"

#include "ReturningWords.h"
#include "catalogue/Board.h"
#include "store/Database.h"
#include <QHash>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSqlQuery>

namespace BoardJson {
namespace {

// A colour code as the client paints it: six hex digits, or white.
QString colourOf(const QVariant& code) {
    static const QRegularExpression hex(QStringLiteral("^[0-9A-Fa-f]{6}$"));
    const QString text = code.toString();
    return QLatin1Char('#') +
           (hex.match(text).hasMatch() ? text.toUpper() : QStringLiteral("FFFFFF"));
}

// One row of a board list, by column name.
class Row {
public:
    Row(const wire::Rowset& rowset, const std::vector<QVariant>& values)
        : m_rowset(rowset), m_values(values) {}
    QVariant operator[](const char* column) const {
        const int i = Board::columnOf(m_rowset, QString::fromLatin1(column));
        return i < 0 ? QVariant() : m_values[size_t(i)];
    }
    QString text(const char* column) const { return (*this)[column].toString().trimmed(); }

private:
    const wire::Rowset& m_rowset;
    const std::vector<QVariant>& m_values;
};

QJsonObject wallPerson(const Row& row, const QDate& today) {
    const qint64 status = row["StatusSys"].toLongLong();
    const ReturningWords back = ReturningWords::Of(status, row.text("returningtext"), today);
    return {{QStringLiteral("name"),
             row.text("LastName") + QStringLiteral(", ") + row.text("FirstName")},
            {QStringLiteral("ext"), row.text("Ext")},
            {QStringLiteral("status"), row.text("Status")},
            {QStringLiteral("colour"), colourOf(row["ColorCode"])},
            {QStringLiteral("returningDate"), back.date},
            {QStringLiteral("returningTime"), back.time}};
}

QJsonObject boardPerson(const Row& row, const QDate& today) {
    QJsonObject person = wallPerson(row, today);
    if (row["ChatStatus"].toInt() == 1)
        person.insert(QStringLiteral("name"),
                      person.value(QStringLiteral("name")).toString() + QStringLiteral(" *"));
    person.insert(QStringLiteral("contact"), row["ContactSys"].toLongLong());
    person.insert(QStringLiteral("statusId"), row["StatusSys"].toLongLong());
    person.insert(QStringLiteral("comment"), row.text("comment"));
    person.insert(QStringLiteral("returnAt"), ReturningWords::MomentOf(row.text("returningtext")));
    person.insert(QStringLiteral("friend"), row["myfriend"].toInt() != 0);
    return person;
}

template <class Make>
QJsonArray people(Database& db, qint64 askingUser, qint64 organizationSys, Make make) {
    const wire::Rowset rowset =
        Board::people(db, askingUser, QStringLiteral("c.organizationsys = ?"), {organizationSys});
    const QDate today = QDate::currentDate();
    QJsonArray out;
    for (const auto& values : rowset.rows)
        out.append(make(Row(rowset, values), today));
    return out;
}

} // namespace

QJsonArray People(Database& db, qint64 askingUser, qint64 organizationSys) {
    return people(db, askingUser, organizationSys, boardPerson);
}

QJsonArray WallPeople(Database& db, qint64 organizationSys) {
    return people(db, 0, organizationSys, wallPerson);
}

QJsonArray Groups(Database& db, qint64 organizationSys) {
    QHash<qint64, QJsonArray> members;
    QSqlQuery m = db.exec(QStringLiteral("SELECT cg.groupsys, cg.contactsys FROM contactgroup cg "
                                         "JOIN grp g ON g.groupsys = cg.groupsys WHERE "
                                         "g.organizationsys = ? ORDER BY cg.contactsys"),
                          {organizationSys});
    while (m.next())
        members[m.value(0).toLongLong()].append(m.value(1).toLongLong());
    QSqlQuery q = db.exec(QStringLiteral("SELECT groupsys, name FROM grp WHERE organizationsys = ? "
                                         "ORDER BY name, groupsys"),
                          {organizationSys});
    QJsonArray groups;
    while (q.next())
        groups.append(
            QJsonObject{{QStringLiteral("id"), q.value(0).toLongLong()},
                        {QStringLiteral("name"), q.value(1).toString()},
                        {QStringLiteral("members"), members.value(q.value(0).toLongLong())}});
    return groups;
}

QJsonArray Statuses(Database& db, qint64 organizationSys) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT s.statussys, s.statustext, k.colorcode FROM "
                                         "status s LEFT JOIN color k ON k.colorsys = s.colorsys "
                                         "WHERE s.organizationsys IS NULL OR s.organizationsys = ? "
                                         "ORDER BY s.sortorder, s.statussys"),
                          {organizationSys});
    QJsonArray statuses;
    while (q.next())
        statuses.append(QJsonObject{{QStringLiteral("id"), q.value(0).toLongLong()},
                                    {QStringLiteral("text"), q.value(1).toString()},
                                    {QStringLiteral("colour"), colourOf(q.value(2))}});
    return statuses;
}

} // namespace BoardJson
