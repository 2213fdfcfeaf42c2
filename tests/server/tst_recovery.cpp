#include "ServerClient.h"
#include "TavloServerProcess.h"
#include "store/Database.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QUrlQuery>
#include <QtTest>

namespace {

struct Page {
    int status = 0;
    QByteArray body;
};

Page fetch(const QUrl& url, const QByteArray& form = QByteArray()) {
    QNetworkAccessManager manager;
    QNetworkRequest request(url);
    QNetworkReply* reply;
    if (form.isNull()) {
        reply = manager.get(request);
    } else {
        request.setHeader(QNetworkRequest::ContentTypeHeader, "application/x-www-form-urlencoded");
        reply = manager.post(request, form);
    }
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    Page page{reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), reply->readAll()};
    reply->deleteLater();
    return page;
}

} // namespace

// Recovery sends no secret through the client: a one-time link reaches the user in the mail.
class TestRecovery : public QObject {
    Q_OBJECT

private slots:
    void linkWorksOnceAndNeverLeaksThroughTheGateway() {
        TavloServerProcess server;
        QVERIFY2(server.started(), qPrintable(server.failure()));
        ServerClient client(server.baseUrl());
        Database db(server.dbUrl());

        const auto reply =
            client.post(QStringLiteral("tl_ForgotPassword 'carol@demo.example','Nolan'"));
        const auto rs =
            client.read(QStringLiteral("tl_ForgotPassword 'carol@demo.example','Nolan'"));
        QVERIFY(rs && !rs->Eof());
        QCOMPARE(rs->Fields(QStringLiteral("UserName")).Value().toString(),
                 QStringLiteral("carol"));
        QCOMPARE(rs->Fields(QStringLiteral("EmailAddress")).Value().toString(),
                 QStringLiteral("carol@demo.example"));
        // Neither the password nor its hash nor any token is answered.
        QVERIFY(rs->Fields(QStringLiteral("Password")).Value().toString() !=
                QStringLiteral("demo"));
        QVERIFY(!reply.body.contains("$argon2"));
        QVERIFY(!QString::fromUtf8(reply.body)
                     .contains(QRegularExpression(QStringLiteral("[0-9a-f]{32}"))));

        const auto nobody =
            client.read(QStringLiteral("tl_ForgotPassword 'carol@demo.example','Other'"));
        QVERIFY(nobody && nobody->Eof());

        QVERIFY(client.write(QStringLiteral(
            "EXEC tl_SendEmail 'carol@demo.example','Tavlo Lost Password Request','Below is your "
            "Tavlo UserName and Password:','info@demo.example','info@demo.example',''")));
        QSqlQuery mail =
            db.exec(QStringLiteral("SELECT body FROM outbox WHERE mailto = 'carol@demo.example'"));
        QVERIFY(mail.next());
        const QString body = mail.value(0).toString();
        const auto match =
            QRegularExpression(QStringLiteral("(http://\\S+/reset\\?token=([0-9a-f]{64}))"))
                .match(body);
        QVERIFY2(match.hasMatch(), qPrintable(body));
        const QString link = match.captured(1), token = match.captured(2);
        QSqlQuery tokens = db.exec(QStringLiteral("SELECT tokenhash FROM resettoken"));
        QVERIFY(tokens.next());
        QVERIFY(tokens.value(0).toString() != token); // only its hash is stored

        QCOMPARE(fetch(QUrl(link)).status, 200);
        QUrlQuery form;
        form.addQueryItem(QStringLiteral("token"), token);
        form.addQueryItem(QStringLiteral("password"), QStringLiteral("n3w-pass"));
        form.addQueryItem(QStringLiteral("again"), QStringLiteral("mismatch"));
        QCOMPARE(fetch(QUrl(server.baseUrl() + QStringLiteral("/reset")),
                       form.toString(QUrl::FullyEncoded).toLatin1())
                     .status,
                 400);
        form.removeQueryItem(QStringLiteral("again"));
        form.addQueryItem(QStringLiteral("again"), QStringLiteral("n3w-pass"));
        const Page done = fetch(QUrl(server.baseUrl() + QStringLiteral("/reset")),
                                form.toString(QUrl::FullyEncoded).toLatin1());
        QCOMPARE(done.status, 200);
        QVERIFY(!done.body.contains(token.toLatin1()));
        QCOMPARE(client.read(QStringLiteral("EXEC LoginCheck 'carol','n3w-pass'"))->RecordCount(),
                 1L);
        QCOMPARE(client.read(QStringLiteral("EXEC LoginCheck 'carol','demo'"))->RecordCount(), 0L);

        // Spent: neither the page nor the form works again.
        QCOMPARE(fetch(QUrl(link)).status, 410);
        QCOMPARE(fetch(QUrl(server.baseUrl() + QStringLiteral("/reset")),
                       form.toString(QUrl::FullyEncoded).toLatin1())
                     .status,
                 410);
        QCOMPARE(fetch(QUrl(server.baseUrl() + QStringLiteral("/reset?token=") +
                            QString(64, QLatin1Char('0'))))
                     .status,
                 410);
    }

    void picturesAndHealth() {
        TavloServerProcess server(TavloServerProcess::Data::Empty);
        QVERIFY2(server.started(), qPrintable(server.failure()));
        const Page picture = fetch(QUrl(server.baseUrl() + QStringLiteral("/pictures/p1001.png")));
        QCOMPARE(picture.status, 200);
        QVERIFY(picture.body.startsWith("\x89PNG"));
        QCOMPARE(fetch(QUrl(server.baseUrl() + QStringLiteral("/pictures/..%2Fetc.png"))).status,
                 404);
        QCOMPARE(fetch(QUrl(server.baseUrl() + QStringLiteral("/healthz"))).body,
                 QByteArray("ok\n"));
    }
};

QTEST_GUILESS_MAIN(TestRecovery)
#include "tst_recovery.moc"
