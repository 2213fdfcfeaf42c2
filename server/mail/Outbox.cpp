#include "Outbox.h"

#include "store/Database.h"
#include <QDateTime>
#include <QSqlQuery>
#include <cstring>
#include <curl/curl.h>

namespace Outbox {
namespace {

struct Upload {
    QByteArray data;
    qsizetype offset = 0;
};

size_t readMessage(char* buffer, size_t size, size_t count, void* userdata) {
    auto* upload = static_cast<Upload*>(userdata);
    const qsizetype room = static_cast<qsizetype>(size * count);
    const qsizetype left = upload->data.size() - upload->offset;
    const qsizetype n = std::min(room, left);
    std::memcpy(buffer, upload->data.constData() + upload->offset, static_cast<size_t>(n));
    upload->offset += n;
    return static_cast<size_t>(n);
}

constexpr qint64 kFirstRetrySeconds = 60;
constexpr qint64 kLongestRetrySeconds = 3600;
constexpr qint64 kGiveUpSeconds = 24 * 3600;

QString stamp(const QDateTime& moment) {
    return moment.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

// Header and body lines end in CR LF; a lone line feed in a body becomes one too.
QByteArray message(const QString& to, const QString& from, const QString& replyTo,
                   const QString& subject, QString body) {
    body.replace(QStringLiteral("\r\n"), QStringLiteral("\n"))
        .replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    QString head = QStringLiteral("To: %1\r\nFrom: %2\r\n").arg(to, from);
    if (!replyTo.isEmpty())
        head += QStringLiteral("Reply-To: %1\r\n").arg(replyTo);
    return (head +
            QStringLiteral("Subject: %1\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n")
                .arg(subject) +
            body + QStringLiteral("\r\n"))
        .toUtf8();
}

qint64 retryAfter(int attempts) {
    return std::min(kFirstRetrySeconds << std::min(attempts - 1, 10), kLongestRetrySeconds);
}

QString send(const QString& smtpUrl, const QString& from, const QString& to,
             const QByteArray& data) {
    CURL* curl = curl_easy_init();
    if (!curl)
        return QStringLiteral("libcurl can't start");
    Upload upload{data, 0};
    curl_slist* recipients = curl_slist_append(nullptr, to.toUtf8().constData());
    const QByteArray url = smtpUrl.toUtf8(), sender = from.toUtf8();
    curl_easy_setopt(curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(curl, CURLOPT_MAIL_FROM, sender.constData());
    curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, recipients);
    curl_easy_setopt(curl, CURLOPT_READFUNCTION, readMessage);
    curl_easy_setopt(curl, CURLOPT_READDATA, &upload);
    curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, 30L);
    const CURLcode result = curl_easy_perform(curl);
    curl_slist_free_all(recipients);
    curl_easy_cleanup(curl);
    return result == CURLE_OK ? QString() : QString::fromUtf8(curl_easy_strerror(result));
}

} // namespace

QStringList List(Database& db) {
    QStringList out;
    QSqlQuery q = db.exec(QStringLiteral("SELECT mailsys, queuedat, sentat, mailto, subject, "
                                         "lasterror, gaveup FROM outbox ORDER BY mailsys"));
    while (q.next())
        out << QStringLiteral("%1\t%2\t%3\t%4\t%5%6")
                   .arg(q.value(0).toString(), q.value(1).toString(),
                        q.value(2).isNull() ? (q.value(6).toInt() != 0 ? QStringLiteral("given up")
                                                                       : QStringLiteral("waiting"))
                                            : q.value(2).toString(),
                        q.value(3).toString(), q.value(4).toString(),
                        q.value(5).isNull() ? QString()
                                            : QStringLiteral("\t") + q.value(5).toString());
    return out;
}

int DeliverWaiting(Database& db, const QString& smtpUrl, const QString& mailFrom,
                   const QDateTime& now) {
    struct Mail {
        QVariant key;
        QString to, subject, body, replyTo, queuedAt;
        int attempts = 0;
    };
    QList<Mail> waiting;
    {
        QSqlQuery q = db.exec(
            QStringLiteral("SELECT mailsys, mailto, subject, body, replyto, queuedat, attempts "
                           "FROM outbox WHERE sentat IS NULL AND gaveup = 0 AND (nextattempt IS "
                           "NULL OR nextattempt <= ?) ORDER BY mailsys"),
            {stamp(now)});
        while (q.next())
            waiting << Mail{q.value(0),
                            q.value(1).toString(),
                            q.value(2).toString(),
                            q.value(3).toString(),
                            q.value(4).toString(),
                            q.value(5).toString(),
                            q.value(6).toInt()};
    }
    int sent = 0;
    for (const Mail& mail : waiting) {
        const QString error =
            send(smtpUrl, mailFrom, mail.to,
                 message(mail.to, mailFrom, mail.replyTo, mail.subject, mail.body));
        const int attempts = mail.attempts + 1;
        const bool giveUp =
            QDateTime::fromString(mail.queuedAt, Qt::ISODate).secsTo(now) >= kGiveUpSeconds;
        db.writeQuietly([&] {
            if (error.isEmpty())
                db.exec(QStringLiteral("UPDATE outbox SET sentat = ?, lasterror = NULL, "
                                       "attempts = ? WHERE mailsys = ?"),
                        {stamp(now), attempts, mail.key});
            else
                db.exec(QStringLiteral("UPDATE outbox SET lasterror = ?, attempts = ?, "
                                       "nextattempt = ?, gaveup = ? WHERE mailsys = ?"),
                        {error, attempts, stamp(now.addSecs(retryAfter(attempts))), giveUp ? 1 : 0,
                         mail.key});
        });
        if (error.isEmpty())
            ++sent;
    }
    return sent;
}

} // namespace Outbox
