#include "BoxRecorder.h"
#include "FreshUserFolders.h"
#include "TestHttpServer.h"
#include "base/Forms.h"
#include "board/frmTLView.h"
#include "config/frmTLSettings.h"
#include "directory/TLStatusRow.h"
#include "shell/TLMain.h"
#include "shell/WebWindow.h"
#include "shell/frmTLMain.h"
#include <QApplication>
#include <QtTest>

// The web window opens the site already signed in. The window is tavlo-web, a program of its
// own that the tray starts and feeds.
class TestWebWindow : public QObject {
    Q_OBJECT
    const QString program = qEnvironmentVariable("TAVLO_BINARY_DIR") + "/client/tavlo-web";

    BoxRecorder told;

private slots:
    // Without tavlo-web each link tells the user once. With it, the administration links open
    // the site signed in: one POST with the program's pair, and only once that page came, their
    // own page in the same window, up and maximized under the program's title: the board's
    // label the overview, the person's menu entry that person.
    void administrationLinksSignInFirst() {
        told.install();
        TestHttpServer site;
        site.setAnswer({200, "text/html", "<html><body>page</body></html>", 0});
        Form<frmTLSettings>(); // its first load reads the stored settings over the live ones
        TLMain().Settings().SetWebAddress(site.baseUrl());
        // The pages asked for, without the browser's own icon requests.
        auto pages = [&site] {
            QList<TestHttpServer::Request> asked;
            for (const auto& request : site.requests())
                if (request.path != "/favicon.ico")
                    asked << request;
            return asked;
        };
        auto& board = Form<frmTLView>();
        WebWindow::SetProgram(program + QStringLiteral("-missing"));
        Form<frmTLMain>().ShowWebBrowser();
        board.lblAdmin_Click();
        QCOMPARE(told.size(), 2);
        QVERIFY(told.texts()[0].contains(QStringLiteral("tavlo-web-missing")));
        QVERIFY(!WebWindow::Instance().IsRunning());

        WebWindow::SetProgram(program);
        board.lblAdmin_Click();
        QTRY_COMPARE_WITH_TIMEOUT(pages().size(), 2, 20000);
        QCOMPARE(pages()[0].method, QByteArray("POST"));
        QCOMPARE(pages()[0].path, QByteArray("/logincheck.asp"));
        // Signed out the pair is empty; the text goes as it stands, not encoded.
        QCOMPARE(pages()[0].body, QByteArray("UserName=&Password="));
        QCOMPARE(pages()[0].header("content-type"),
                 QByteArray("application/x-www-form-urlencoded"));
        QCOMPARE(pages()[1].method, QByteArray("GET"));
        QCOMPARE(pages()[1].target, QByteArray("/Administrator.asp"));
        auto& web = WebWindow::Instance();
        QTRY_COMPARE_WITH_TIMEOUT(web.ShownTitle(),
                                  QStringLiteral("Tavlo - The Internet Electronic In / Out Board"),
                                  5000);
        const qint64 window = web.ProcessId();

        auto person = std::make_shared<TLStatusRow>();
        person->Contact().ContactSys = 1002;
        person->Contact().UserSys = 5002;
        board.ContextRow = person;
        board.mnuAdmin->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(pages().size(), 4, 20000);
        QCOMPARE(pages()[2].path, QByteArray("/logincheck.asp"));
        QCOMPARE(pages()[3].target,
                 QByteArray("/Administrator.asp?p=1002&v=5002&r=0&visit_num=0&sentby=menu"));
        QCOMPARE(web.ProcessId(), window);
        Unload<frmTLView>();
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestWebWindow)
#include "tst_webwindow.moc"
