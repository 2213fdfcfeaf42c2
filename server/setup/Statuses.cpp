#include "Statuses.h"

#include "BadInput.h"
#include "InputRules.h"
#include "store/Database.h"
#include <QJsonObject>

namespace Statuses {
namespace {

struct Checked {
    QString text;
    QString colour; // RRGGBB
    int order = 0;
};

Checked check(const StatusInput& input) {
    return {InputRules::name(input.text, QStringLiteral("the status text")),
            InputRules::colour(input.colour),
            InputRules::number(input.order, QStringLiteral("the order"), 1, 1000)};
}

// The key of a colour, added when no status used it yet.
qint64 colourKey(Database& db, const QString& code) {
    QSqlQuery q = db.exec(
        QStringLiteral("SELECT colorsys FROM color WHERE colorcode = ? ORDER BY colorsys"), {code});
    if (q.next())
        return q.value(0).toLongLong();
    q.finish();
    const qint64 key = db.nextKey(QStringLiteral("color"), QStringLiteral("colorsys"));
    db.exec(QStringLiteral("INSERT INTO color (colorsys, colorcode) VALUES (?, ?)"), {key, code});
    return key;
}

// A status text is unique among the shared ones and the organisation's own (any case).
void refuseTaken(Database& db, qint64 organizationSys, const QString& text, qint64 except) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT 1 FROM status WHERE LOWER(statustext) = LOWER(?) "
                                         "AND (organizationsys IS NULL OR organizationsys = ?) "
                                         "AND statussys <> ?"),
                          {text, organizationSys, except});
    if (q.next())
        throw BadInput(QStringLiteral("there is a status '%1' already").arg(text));
}

} // namespace

void ensureLegend(Database& db) {
    struct Legend {
        qint64 sys;
        const char* text;
        const char* colour;
        int order;
    };
    const Legend legend[] = {{kIn, "In", "00C000", 1},
                             {kUnavailable, "Unavailable", "FFFF00", 2},
                             {kOut, "Out", "C00000", 3}};
    for (const Legend& l : legend) {
        QSqlQuery there =
            db.exec(QStringLiteral("SELECT 1 FROM status WHERE statussys = ?"), {l.sys});
        if (there.next())
            continue;
        there.finish();
        db.exec(
            QStringLiteral("INSERT INTO status (statussys, organizationsys, statustext, "
                           "colorsys, picturelocation, sortorder) VALUES (?, NULL, ?, ?, ?, ?)"),
            {l.sys, QString::fromLatin1(l.text), colourKey(db, QString::fromLatin1(l.colour)),
             QStringLiteral("status/%1.png").arg(l.sys), l.order});
    }
}

qint64 add(Database& db, qint64 organizationSys, const StatusInput& input) {
    const Checked status = check(input);
    return db.write([&] {
        refuseTaken(db, organizationSys, status.text, -1);
        ensureLegend(db);
        const qint64 key = db.nextKey(QStringLiteral("status"), QStringLiteral("statussys"));
        db.exec(QStringLiteral("INSERT INTO status (statussys, organizationsys, statustext, "
                               "colorsys, sortorder) VALUES (?, ?, ?, ?, ?)"),
                {key, organizationSys, status.text, colourKey(db, status.colour), status.order});
        return key;
    });
}

void edit(Database& db, qint64 organizationSys, qint64 statusSys, const StatusInput& input) {
    const Checked status = check(input);
    db.write([&] {
        QSqlQuery own = db.exec(
            QStringLiteral("SELECT 1 FROM status WHERE statussys = ? AND organizationsys = ?"),
            {statusSys, organizationSys});
        if (!own.next())
            throw BadInput(QStringLiteral("status %1 isn't one of the organisation's own "
                                          "(the shared ones stay as they are)")
                               .arg(statusSys));
        own.finish();
        refuseTaken(db, organizationSys, status.text, statusSys);
        db.exec(QStringLiteral("UPDATE status SET statustext = ?, colorsys = ?, sortorder = ? "
                               "WHERE statussys = ?"),
                {status.text, colourKey(db, status.colour), status.order, statusSys});
    });
}

bool isLegend(qint64 statusSys) {
    return statusSys == kIn || statusSys == kUnavailable || statusSys == kOut;
}

QJsonArray list(Database& db, qint64 organizationSys) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT s.statussys, s.statustext, k.colorcode, "
                                         "s.sortorder, s.organizationsys IS NULL FROM status s "
                                         "LEFT JOIN color k ON k.colorsys = s.colorsys WHERE "
                                         "s.organizationsys IS NULL OR s.organizationsys = ? "
                                         "ORDER BY s.sortorder, s.statussys"),
                          {organizationSys});
    QJsonArray out;
    while (q.next())
        out.append(QJsonObject{{QStringLiteral("status"), q.value(0).toLongLong()},
                               {QStringLiteral("text"), q.value(1).toString()},
                               {QStringLiteral("colour"), QLatin1Char('#') + q.value(2).toString()},
                               {QStringLiteral("order"), q.value(3).toInt()},
                               {QStringLiteral("shared"), q.value(4).toBool()},
                               {QStringLiteral("legend"), isLegend(q.value(0).toLongLong())}});
    return out;
}

} // namespace Statuses
