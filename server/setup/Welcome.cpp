#include "Welcome.h"

#include "catalogue/Recovery.h"
#include "store/Database.h"
#include "store/PasswordHash.h"
#include <QDateTime>
#include <sodium.h>

namespace Welcome {
namespace {

// Twelve characters of an alphabet without look-alikes (no 0/O, 1/l/I): about 70 bits.
QString randomPassword() {
    static const char kAlphabet[] = "abcdefghijkmnopqrstuvwxyzABCDEFGHJKLMNPQRSTUVWXYZ23456789";
    QString out;
    for (int i = 0; i < 12; ++i)
        out += QLatin1Char(kAlphabet[randombytes_uniform(sizeof kAlphabet - 1)]);
    return out;
}

QString stamp() {
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

} // namespace

FirstPassword prepare(const MailSetup& mail) {
    const QString password = randomPassword();
    return {mail.mails() ? QString() : password, PasswordHash::hash(password)};
}

void mailLink(Database& db, const MailSetup& mail, qint64 userSys, bool welcome) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT u.username, c.firstname, c.emailaddress, o.name "
                                         "FROM users u JOIN contact c ON c.contactsys = "
                                         "u.contactsys JOIN organization o ON o.organizationsys "
                                         "= c.organizationsys WHERE u.usersys = ?"),
                          {userSys});
    if (!q.next())
        return;
    const QString user = q.value(0).toString();
    const QString first = q.value(1).toString();
    const QString address = q.value(2).toString();
    const QString organisation = q.value(3).toString();
    q.finish();
    const int valid = welcome ? kWelcomeLinkSeconds : kResetLinkSeconds;
    const QString link = Recovery::NewLink(db, userSys, mail.publicUrl, valid);
    const QString lead =
        welcome ? QStringLiteral("an account on the Tavlo board of %1 has been made for you.")
                      .arg(organisation)
                : QStringLiteral("an administrator of %1 has sent you a link to set a new "
                                 "Tavlo password.")
                      .arg(organisation);
    const QString body =
        QStringLiteral("Hello %1,\n\n%2\nYour user name is %3.\n\nSet your "
                       "password here (the link works once, within %4):\n%5\n")
            .arg(first, lead, user, welcome ? QStringLiteral("7 days") : QStringLiteral("an hour"),
                 link);
    db.exec(QStringLiteral("INSERT INTO outbox (mailsys, queuedat, mailto, subject, body, "
                           "mailfrom) VALUES (?, ?, ?, ?, ?, ?)"),
            {db.nextKey(QStringLiteral("outbox"), QStringLiteral("mailsys")), stamp(), address,
             welcome ? QStringLiteral("Your Tavlo account") : QStringLiteral("Your Tavlo password"),
             body, mail.mailFrom});
}

} // namespace Welcome
