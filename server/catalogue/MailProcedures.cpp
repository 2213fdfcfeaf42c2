// Mail the client sends (notes, help desk, recovery) and the recovery question itself.
#include "Board.h"
#include "Catalogue.h"
#include "Recovery.h"
#include "RowsetFromQuery.h"
#include "store/Database.h"

namespace {

using S = ArgShape;

const QString kRecoverySubject = QStringLiteral("Tavlo Lost Password Request");

// Queues the mail; a worker delivers it. A recovery mail gets its reset link here, so the
// link never travels through the client.
Answer sendEmail(Database& db, const Args& a) {
    QString body = a.text(2);
    if (a.text(1) == kRecoverySubject) {
        if (const auto link = Recovery::TakeLink(a.text(0)))
            body += QStringLiteral("\r\n\r\nTo choose a new password, open this link within the "
                                   "hour (it works once):\r\n") +
                    *link + QStringLiteral("\r\n");
    }
    db.write([&] {
        const qint64 key = db.nextKey(QStringLiteral("outbox"), QStringLiteral("mailsys"));
        db.exec(QStringLiteral("INSERT INTO outbox (mailsys, queuedat, mailto, subject, body, "
                               "mailfrom, replyto, extra) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
                {key, Board::now(), a.value(0), a.value(1), body, a.value(3), a.value(4),
                 a.count() > 5 ? a.value(5) : QVariant()});
    });
    return std::nullopt;
}

// Answers who the address and last name belong to; the password column only says that a link
// follows, since no password is kept that could be sent.
Answer forgotPassword(Database& db, const Args& a) {
    QSqlQuery q = db.exec(
        QStringLiteral("SELECT u.usersys, u.username, c.emailaddress FROM users u JOIN contact c "
                       "ON c.contactsys = u.contactsys WHERE u.removed = 0 AND "
                       "LOWER(c.emailaddress) = LOWER(?) AND LOWER(c.lastname) = LOWER(?) "
                       "ORDER BY u.usersys"),
        {a.text(0).trimmed(), a.text(1).trimmed()});
    wire::Rowset rowset;
    int number = 1;
    for (const char* name : {"UserName", "Password", "EmailAddress"})
        rowset.columns.push_back({QLatin1String(name),
                                  QLatin1String(name),
                                  number++,
                                  wire::FieldType::String,
                                  {},
                                  255,
                                  true});
    if (!q.next())
        return rowset;
    const qint64 userSys = q.value(0).toLongLong();
    const QString userName = q.value(1).toString();
    const QString address = q.value(2).toString();
    q.finish();
    Recovery::Issue(db, userSys, address);
    rowset.rows.push_back(
        {userName, QStringLiteral("(not sent by mail: use the link below to choose a new one)"),
         address});
    return rowset;
}

} // namespace

void registerMailProcedures() {
    auto& c = Catalogue::instance();
    c.add(QStringLiteral("tl_SendEmail"),
          {{S::Text, S::Text, S::Text, S::Text, S::Text},
           {S::Text, S::Text, S::Text, S::Text, S::Text, S::Text}},
          sendEmail);
    c.add(QStringLiteral("tl_ForgotPassword"), {{S::Text, S::Text}}, forgotPassword);
}
