// Mail the client sends (notes, help desk, recovery) and the recovery question itself.
#include "Board.h"
#include "Catalogue.h"
#include "Recovery.h"
#include "RowsetFromQuery.h"
#include "ServerSettings.h"
#include "store/Database.h"

namespace {

using S = ArgShape;

const QString kRecoverySubject = QStringLiteral("Tavlo Lost Password Request");
constexpr int kSubjectLimit = 250;
constexpr int kBodyLimit = 32'000;

// The fields that become mail headers: to, subject, from and reply-to.
const int kHeaderFields[] = {0, 1, 3, 4};

// A line break would start a header of the caller's choosing; a NUL ends the text early.
bool breaksHeader(const QString& field) {
    return field.contains(QLatin1Char('\r')) || field.contains(QLatin1Char('\n')) ||
           field.contains(QChar(0));
}

bool isColleaguesAddress(Database& db, const Caller& caller, const QString& address) {
    return db
        .exec(QStringLiteral("SELECT 1 FROM contact WHERE LOWER(TRIM(emailaddress)) = LOWER(?) "
                             "AND organizationsys = ?"),
              {address, caller.organizationSys})
        .next();
}

// The gateway relays nothing to the outside: one recipient, who is either a person of the
// sender's organisation or the configured help desk.
std::optional<QString> recipientRefusal(Database& db, const Caller& caller, const QString& to) {
    if (to.isEmpty())
        return QStringLiteral("mail without a recipient");
    if (to.contains(QLatin1Char(',')) || to.contains(QLatin1Char(';')))
        return QStringLiteral("mail to several recipients");
    const QString& helpDesk = ServerSettings::Current().helpDeskMail;
    if (!helpDesk.isEmpty() && to.compare(helpDesk, Qt::CaseInsensitive) == 0)
        return std::nullopt;
    if (isColleaguesAddress(db, caller, to))
        return std::nullopt;
    return QStringLiteral("mail to an address nobody in the organisation has: ") + to.left(80);
}

void requireSendable(Database& db, const Args& a) {
    for (int field : kHeaderFields)
        if (breaksHeader(a.text(field)))
            throw Refusal(QStringLiteral("mail with a line break or NUL in a header"));
    if (a.text(1).size() > kSubjectLimit || a.text(2).size() > kBodyLimit)
        throw Refusal(QStringLiteral("mail with a subject over %1 or a body over %2 characters")
                          .arg(kSubjectLimit)
                          .arg(kBodyLimit));
    const QString to = a.text(0).trimmed();
    if (!a.caller().signedIn()) {
        // Without a session only the recovery mail goes, and only to the address that the
        // recovery question matched.
        if (a.text(1) != kRecoverySubject || !Recovery::HasLink(db, to))
            throw Refusal(QStringLiteral("tl_SendEmail needs a signed-in session"));
        return;
    }
    if (const auto reason = recipientRefusal(db, a.caller(), to))
        throw Refusal(*reason);
}

// The caller's own address may stand as Reply-To; any other "from" is dropped, since the mail
// always goes out from the server's own address.
QVariant replyTo(const Args& a) {
    const QString from = a.text(3).trimmed();
    if (a.caller().signedIn() && !from.isEmpty() &&
        from.compare(a.caller().emailAddress.trimmed(), Qt::CaseInsensitive) == 0)
        return from;
    return QVariant();
}

// Queues the mail; a worker delivers it. A recovery mail gets its reset link here, so the
// link never travels through the client.
Answer sendEmail(Database& db, const Args& a) {
    requireSendable(db, a);
    const QString to = a.text(0).trimmed();
    db.write([&] {
        QString body = a.text(2);
        if (a.text(1) == kRecoverySubject) {
            if (const auto link = Recovery::TakeLink(db, to))
                body += QStringLiteral("\r\n\r\nTo choose a new password, open this link "
                                       "within the hour (it works once):\r\n") +
                        *link + QStringLiteral("\r\n");
        }
        const qint64 key = db.nextKey(QStringLiteral("outbox"), QStringLiteral("mailsys"));
        db.exec(QStringLiteral("INSERT INTO outbox (mailsys, queuedat, mailto, subject, body, "
                               "mailfrom, replyto, extra) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
                {key, Board::now(), to, a.value(1), body, ServerSettings::Current().mailFrom,
                 replyTo(a), a.count() > 5 ? a.value(5) : QVariant()});
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
          sendEmail, {true, {}});
    c.add(QStringLiteral("tl_ForgotPassword"), {{S::Text, S::Text}}, forgotPassword, {true, {}});
}
