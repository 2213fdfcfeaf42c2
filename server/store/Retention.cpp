#include "Retention.h"

#include "Database.h"
#include "SessionStore.h"
#include <QDateTime>

namespace Retention {
namespace {

QString daysAgo(int days) {
    return QDateTime::currentDateTime().addDays(-days).toString(
        QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

} // namespace

Swept Sweep(Database& db) {
    Swept swept;
    db.writeQuietly([&] {
        swept.anomalies =
            db.exec(QStringLiteral("DELETE FROM anomaly WHERE loggedat < ?"), {daysAgo(90)})
                .numRowsAffected();
        swept.mails = db.exec(QStringLiteral("DELETE FROM outbox WHERE (sentat IS NOT NULL AND "
                                             "sentat < ?) OR (gaveup = 1 AND queuedat < ?)"),
                              {daysAgo(30), daysAgo(30)})
                          .numRowsAffected();
        swept.history =
            db.exec(QStringLiteral("DELETE FROM statushistory WHERE changedat < ?"), {daysAgo(400)})
                .numRowsAffected();
        db.exec(QStringLiteral("DELETE FROM pendinglink WHERE expires < ?"), {daysAgo(0)});
        // Failed sign-ins are forgotten a day after the last one (times kept in UTC).
        db.exec(QStringLiteral("DELETE FROM signinfailure WHERE lastfailure < ?"),
                {QDateTime::currentDateTimeUtc().addDays(-1).toString(Qt::ISODateWithMs)});
        swept.resetTokens =
            db.exec(QStringLiteral("DELETE FROM resettoken WHERE used = 1 OR expires < ?"),
                    {daysAgo(0)})
                .numRowsAffected();
    });
    swept.sessions = SessionStore::PurgeLapsed(db);
    return swept;
}

} // namespace Retention
