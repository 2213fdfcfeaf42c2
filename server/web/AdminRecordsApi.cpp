// What the administration reads: the client release (and a new one), the mail sent to the
// organisation's people, their error reports and the status history.
#include "AdminApiHandlers.h"
#include "setup/BadInput.h"
#include "setup/InputRules.h"
#include "setup/StatusHistory.h"
#include "store/Database.h"
#include "store/Release.h"
#include <QSqlRecord>

namespace AdminApi {
namespace {

// The rows of a query as objects named by its columns.
QJsonArray rowsOf(QSqlQuery& q) {
    QJsonArray out;
    while (q.next()) {
        QJsonObject row;
        for (int i = 0; i < q.record().count(); ++i)
            row.insert(q.record().fieldName(i),
                       q.value(i).isNull() ? QJsonValue() : QJsonValue::fromVariant(q.value(i)));
        out.append(row);
    }
    return out;
}

std::optional<QString> optionalField(const Fields& fields, const QString& name) {
    const QString value = fields.value(name).trimmed();
    return value.isEmpty() ? std::nullopt : std::optional(value);
}

} // namespace

// What tl_VersionCheck answers every client, of every organisation.
Reply release(Database& db, qint64, qint64, const Fields&) {
    QSqlQuery q = db.exec(QStringLiteral(
        "SELECT versionstring AS version, ftpsite AS \"ftpSite\", ftpdirectory AS \"ftpDir\", "
        "ftpfile AS file, ftpuser AS \"ftpUser\", updatesha256 AS sha256 FROM versioninfo "
        "ORDER BY versionsys DESC LIMIT 1"));
    const QJsonArray rows = rowsOf(q);
    return ok(rows.isEmpty() ? QJsonObject() : rows.first().toObject());
}

Reply setRelease(Database& db, qint64 organizationSys, qint64 userSys, const Fields& f) {
    const auto parsed = Releases::parse(
        {f.value(QStringLiteral("version")).trimmed(), f.value(QStringLiteral("ftpSite")).trimmed(),
         f.value(QStringLiteral("ftpDir")).trimmed(), f.value(QStringLiteral("file")).trimmed(),
         optionalField(f, QStringLiteral("ftpUser")),
         optionalField(f, QStringLiteral("ftpPassword")),
         f.value(QStringLiteral("sha256")).trimmed()});
    if (!parsed.release)
        throw BadInput(parsed.error);
    Releases::add(db, *parsed.release);
    return release(db, organizationSys, userSys, f);
}

// Mail to the organisation's people, the newest first.
Reply outbox(Database& db, qint64 organizationSys, qint64, const Fields&) {
    QSqlQuery q = db.exec(
        QStringLiteral("SELECT o.mailsys AS mail, o.queuedat AS queued, o.sentat AS sent, "
                       "o.gaveup AS \"gaveUp\", o.mailto AS \"to\", o.subject, o.lasterror AS "
                       "error FROM outbox o WHERE LOWER(o.mailto) IN (SELECT "
                       "LOWER(TRIM(emailaddress)) FROM contact WHERE organizationsys = ?) "
                       "ORDER BY o.mailsys DESC LIMIT 500"),
        {organizationSys});
    return ok(rowsOf(q));
}

// Error reports sent by the clients of the organisation's people, the newest first.
Reply anomalies(Database& db, qint64 organizationSys, qint64, const Fields&) {
    QSqlQuery q = db.exec(
        QStringLiteral("SELECT a.anomalysys AS report, a.loggedat AS logged, a.errornumber AS "
                       "number, a.procedurename AS procedure, a.program, a.contactsys AS "
                       "contact, a.computername AS computer, a.errortext AS text FROM anomaly a "
                       "JOIN contact c ON c.contactsys = a.contactsys WHERE c.organizationsys = ? "
                       "ORDER BY a.anomalysys DESC LIMIT 500"),
        {organizationSys});
    return ok(rowsOf(q));
}

Reply history(Database& db, qint64 organizationSys, qint64, const Fields& fields) {
    const QString days = fields.value(QStringLiteral("days"), QStringLiteral("7"));
    return ok(StatusHistory::json(StatusHistory::read(
        db, InputRules::number(days, QStringLiteral("days"), 1, 400), organizationSys)));
}

} // namespace AdminApi
