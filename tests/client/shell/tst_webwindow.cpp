#include "../platform/FreshUserFolders.h"
#include "TestHttpServer.h"
#include "base/Forms.h"
#include "config/frmTLSettings.h"
#include "shell/TLMain.h"
#include "shell/WebEngineSetup.h"
#include "shell/frmTLMain.h"
#include "shell/frmTLWeb.h"
#include <QApplication>
#include <QtTest>

// The web window opens the site already signed in: one POST with the program's credentials.
class TestWebWindow : public QObject {
    Q_OBJECT

private slots:
    void postsTheCredentials() {
        TestHttpServer site;
        site.setAnswer({200, "text/html", "<html><body>signed in</body></html>", 0});
        Form<frmTLSettings>(); // its first load reads the stored settings over the live ones
        TLMain().Settings().SetWebAddress(site.baseUrl());

        Form<frmTLMain>().ShowWebBrowser();
        auto& web = Form<frmTLWeb>();
        QVERIFY(web.isVisible());
        QCOMPARE(web.windowTitle(),
                 QStringLiteral("Tavlo - The Internet Electronic In / Out Board"));
        QTRY_VERIFY_WITH_TIMEOUT(!site.requests().isEmpty(), 20000);
        const auto request = site.requests().first();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.path, QByteArray("/logincheck.asp"));
        // Signed out the pair is empty; the text goes as it stands, not encoded.
        QCOMPARE(request.body, QByteArray("UserName=&Password="));
        QCOMPARE(request.header("content-type"), QByteArray("application/x-www-form-urlencoded"));
        QTRY_VERIFY_WITH_TIMEOUT(web.isMaximized(), 5000);
    }
};

int main(int argc, char** argv) {
    FreshUserFolders folders;
    PrepareWebEngine();
    QApplication app(argc, argv);
    TestWebWindow test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_webwindow.moc"
