#include "ServerClient.h"
#include "TavloServerProcess.h"
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkCookieJar>
#include <QNetworkReply>
#include <QtTest>

// The web administration's JSON routes: an administrator adds a group and a person in it, who
// then signs in; bad input is answered 400 and changes nothing; a form instead of JSON 415; a
// person without the right is refused 403 and changes nothing either, a visitor without a
// session 401.
class TestAdminApi : public QObject {
    Q_OBJECT
    std::unique_ptr<TavloServerProcess> server;

    struct Answer {
        int status = 0;
        QJsonValue json;
    };

    // One browser with its own cookies.
    struct Visitor {
        QNetworkAccessManager manager;
        Visitor() { manager.setCookieJar(new QNetworkCookieJar(&manager)); }
    };

    QNetworkReply* send(Visitor& visitor, const QString& path, const QByteArray& body,
                        const QByteArray& type) {
        QNetworkRequest request(QUrl(server->baseUrl() + path));
        if (body.isNull())
            return visitor.manager.get(request);
        request.setHeader(QNetworkRequest::ContentTypeHeader, type);
        return visitor.manager.post(request, body);
    }

    Answer fetch(Visitor& visitor, const QString& path) {
        return answer(send(visitor, path, QByteArray(), QByteArray()));
    }

    Answer post(Visitor& visitor, const QString& path, const QJsonObject& body) {
        return answer(send(visitor, path, QJsonDocument(body).toJson(), "application/json"));
    }

    Answer answer(QNetworkReply* reply) {
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        const QJsonDocument doc = QJsonDocument::fromJson(reply->readAll());
        Answer answer{reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
                      doc.isArray() ? QJsonValue(doc.array()) : QJsonValue(doc.object())};
        reply->deleteLater();
        return answer;
    }

    void signIn(Visitor& visitor, const QByteArray& name) {
        QNetworkReply* reply =
            send(visitor, "/logincheck.asp", "UserName=" + name + "&Password=demo",
                 "application/x-www-form-urlencoded");
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        QCOMPARE(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 200);
        reply->deleteLater();
    }

    QStringList groupNames(Visitor& visitor) {
        QStringList names;
        for (const QJsonValue group : fetch(visitor, "/admin/api/groups").json.toArray())
            names << group[QStringLiteral("name")].toString();
        return names;
    }

private slots:
    void initTestCase() {
        server = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Demo);
        QVERIFY2(server->started(), qPrintable(server->failure()));
    }

    void anAdministratorAddsAGroupAndAPersonOthersAreRefused() {
        Visitor ann;
        signIn(ann, "ann");
        const Answer group = post(ann, "/admin/api/group/add", {{"name", "Night Shift"}});
        QCOMPARE(group.status, 200);
        const Answer added = post(ann, "/admin/api/person/add",
                                  {{"first", "Zoe"},
                                   {"last", "Quay"},
                                   {"user", "zoe"},
                                   {"email", "zoe@demo.example"},
                                   {"group", "night shift"},
                                   {"location", "Warehouse"},
                                   {"ext", 299},
                                   {"admin", false}});
        QCOMPARE(added.status, 200);
        const QString contact = QString::number(added.json[QStringLiteral("contact")].toInteger());
        const Answer zoe = fetch(ann, "/admin/api/person?contact=" + contact);
        QCOMPARE(zoe.status, 200);
        QCOMPARE(zoe.json[QStringLiteral("userName")].toString(), QStringLiteral("zoe"));
        QCOMPARE(zoe.json[QStringLiteral("location")].toString(), QStringLiteral("Warehouse"));
        QCOMPARE(zoe.json[QStringLiteral("groups")].toArray(),
                 QJsonArray({group.json[QStringLiteral("added")]}));
        QVERIFY(ServerClient(server->baseUrl())
                    .signIn("zoe", added.json[QStringLiteral("password")].toString()));

        const Answer taken =
            post(ann, "/admin/api/person/add",
                 {{"first", "Al"}, {"last", "Ex"}, {"user", "ZOE"}, {"email", "al@demo.example"}});
        QCOMPARE(taken.status, 400);
        QCOMPARE(taken.json[QStringLiteral("error")].toString(),
                 QStringLiteral("user name 'ZOE' is taken"));
        QCOMPARE(post(ann, "/admin/api/person/disable", {{"contact", 1001}}).status,
                 400); // herself
        QCOMPARE(post(ann, "/admin/api/group/add", {{"name", QJsonArray{"A"}}}).status, 400);
        // A form, which another site could post, is not taken.
        const Answer form = answer(
            send(ann, "/admin/api/group/add", "name=Form", "application/x-www-form-urlencoded"));
        QCOMPARE(form.status, 415);

        Visitor carol;
        signIn(carol, "carol");
        QCOMPARE(fetch(carol, "/admin/api/people").status, 403);
        const Answer refused = post(carol, "/admin/api/group/add", {{"name", "Carol's"}});
        QCOMPARE(refused.status, 403);
        QCOMPARE(refused.json[QStringLiteral("error")].toString(),
                 QStringLiteral("You do not have administrator rights."));
        QCOMPARE(groupNames(ann), QStringList({"Engineering", "Night Shift", "Sales", "Support"}));
        Visitor stranger;
        QCOMPARE(fetch(stranger, "/admin/api/people").status, 401);
    }
};

QTEST_MAIN(TestAdminApi)
#include "tst_adminapi.moc"
