#include "TavloServerProcess.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkCookieJar>
#include <QNetworkReply>
#include <QtTest>

// The web site's administration: a sign-in opens a session in a cookie, and only an
// administrator's session gets the administration's page (whose script reads the people).
class TestWebAdmin : public QObject {
    Q_OBJECT
    std::unique_ptr<TavloServerProcess> server;

    struct Page {
        int status = 0;
        QString body;
    };

    // One visitor: a browser with its own cookies.
    struct Visitor {
        QNetworkAccessManager manager;
        Visitor() { manager.setCookieJar(new QNetworkCookieJar(&manager)); }
    };

    Page fetch(Visitor& visitor, const QString& path, const QByteArray& form = QByteArray(),
               const QByteArray& cookie = QByteArray()) {
        QNetworkRequest request(QUrl(server->baseUrl() + path));
        if (!cookie.isEmpty())
            request.setRawHeader("Cookie", cookie);
        QNetworkReply* reply;
        if (form.isNull()) {
            reply = visitor.manager.get(request);
        } else {
            request.setHeader(QNetworkRequest::ContentTypeHeader,
                              "application/x-www-form-urlencoded");
            reply = visitor.manager.post(request, form);
        }
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        Page page{reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
                  QString::fromUtf8(reply->readAll())};
        reply->deleteLater();
        return page;
    }

    void signIn(Visitor& visitor, const QByteArray& name) {
        QCOMPARE(fetch(visitor, "/logincheck.asp", "UserName=" + name + "&Password=demo").status,
                 200);
    }

private slots:
    void initTestCase() {
        server = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Demo);
        QVERIFY2(server->started(), qPrintable(server->failure()));
    }

    void strangersGetTheSignIn() {
        Visitor visitor;
        Page page = fetch(visitor, "/Administrator.asp");
        QCOMPARE(page.status, 401);
        QVERIFY(page.body.contains("action=\"/logincheck.asp\""));
        page = fetch(visitor, "/Administrator.asp", QByteArray(), "TavloWeb=0123456789abcdef");
        QCOMPARE(page.status, 401);
        // A refused sign-in opens no session.
        QCOMPARE(fetch(visitor, "/logincheck.asp", "UserName=ann&Password=wrong").status, 401);
        QCOMPARE(fetch(visitor, "/Administrator.asp").status, 401);
    }

    // The page is the same for the list and for the client's link to one person: its script
    // reads the person from the address, and the people from the JSON routes.
    void anAdministratorGetsTheAdministrationPage() {
        Visitor visitor;
        signIn(visitor, "ann");
        for (const char* path : {"/Administrator.asp",
                                 "/Administrator.asp?p=1002&v=5002&r=0&visit_num=0&sentby=menu"}) {
            const Page page = fetch(visitor, path);
            QCOMPARE(page.status, 200);
            QVERIFY(page.body.contains("<script type=\"module\" src=\"/static/admin.js\">"));
            QVERIFY(!page.body.contains("Marsh"));
        }
    }

    void othersAreTurnedAway() {
        Visitor visitor;
        signIn(visitor, "bob");
        const Page page = fetch(visitor, "/Administrator.asp");
        QCOMPARE(page.status, 403);
        QVERIFY(page.body.contains("You do not have administrator rights."));
    }
};

QTEST_MAIN(TestWebAdmin)
#include "tst_webadmin.moc"
