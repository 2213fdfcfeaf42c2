#include "FreshUserFolders.h"
#include "StubGateway.h"
#include "TestHttpServer.h"
#include "base/Clock.h"
#include "base/Forms.h"
#include "base/MsgBox.h"
#include "config/frmTLSettings.h"
#include "data/GatewayCall.h"
#include "data/TLDataAccess.h"
#include "shell/TLMain.h"
#include "wire/RowsetWriter.h"

#include "Rows.h"
#include <QApplication>
#include <QtTest>

namespace {

QByteArray oneColumnRowset(const QString& column, const QVariant& value) {
    wire::Rowset rowset;
    rowset.columns.push_back({column, column, 1, wire::FieldType::I4, {}, -1, true});
    rowset.rows.push_back({value});
    return wire::RowsetWriter::write(rowset);
}

const QString kUnreachable = QStringLiteral("Tavlo is unable to contact the server.\r\rPlease "
                                            "check the connection settings.");

} // namespace

// The gateway against a real HTTP server on a loopback port.
class TestGateway : public QObject {
    Q_OBJECT
    std::unique_ptr<TestHttpServer> server;
    BoxRecorder boxes;

    TLDataAccess& data() { return TLMain().DataAccess(); }

private slots:
    void init() {
        PointAtFreshStub(server, boxes);
        Clock::SetFixed(QDateTime(QDate(2026, 11, 18), QTime(9, 5, 7)));
    }
    void cleanup() {
        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        Clock::Release();
    }

    void theRequestIsExact() {
        TLMain().Settings().SetWebAddress(server->baseUrl() + QLatin1Char('/'));
        data().ExecuteSQLFromWeb(QStringLiteral("EXEC tl_SetStatus 12,8,NULL,NULL,'it''s',15"));
        QCOMPARE(server->requests().size(), 1);
        const auto request = server->requests().at(0);
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.target, QByteArray("//XMLDemo.asp")); // a trailing slash stays
        QCOMPARE(request.header("lastCached"), QByteArray("11/18/2026 9:05:07 AM"));
        QCOMPARE(request.header("Content-Type"), QByteArray("application/x-www-form-urlencoded"));
        QCOMPARE(request.body, QByteArray("strSQL=EXEC%20tl%5FSetStatus%2012%2C8%2CNULL%2CNULL%2C"
                                          "%27it%27%27s%27%2C15"));
        QVERIFY(data().OnceConnected);
        QVERIFY(boxes.isEmpty());
    }

    // A read that comes back as a rowset succeeds whatever the status code says.
    void aRowsetWithAnErrorStatusReads() {
        data().blnErrored = true;
        server->setAnswer({404, "text/html", oneColumnRowset(QStringLiteral("n"), 7), 0});
        const auto rs = data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X"));
        QVERIFY(rs);
        QCOMPARE(rs->Fields(QStringLiteral("n")).Value().toInt(), 7);
        QVERIFY(!data().blnErrored);
        QVERIFY(boxes.isEmpty());
    }

    // Answers that are no rowset count as an unreachable server: one message, the settings
    // dialog, no recordset.
    void unreadableAnswers_data() {
        columns<int, QByteArray>("status", "body");
        row("empty body", 200, QByteArray());
        row("HTML 500", 500, QByteArray("<html><body>Server Error</body></html>"));
        row("XML, no rowset", 200, QByteArray("<root><a/></root>"));
        row("truncated", 200, oneColumnRowset(QStringLiteral("n"), 1).left(120));
    }
    void unreadableAnswers() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        server->setAnswer({status, "text/html", body, 0});
        data().ConnectionEnabled = true;
        QVERIFY(!data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X")));
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].text, kUnreachable);
        QCOMPARE(boxes[0].icon(), int(vb::vbCritical));
        QVERIFY(data().blnErrored);
        QVERIFY(!data().ConnectionEnabled);
        QVERIFY(IsLoaded<frmTLSettings>() && Form<frmTLSettings>().isVisible());
    }

    // A refused connection and a server that stops answering both read as unreachable.
    void unreachableServer_data() {
        columns<bool>("stalled");
        row("refused", false);
        row("no answer in time", true);
    }
    void unreachableServer() {
        QFETCH(bool, stalled);
        if (stalled)
            server->setAnswer({200, "text/xml", oneColumnRowset(QStringLiteral("n"), 1), 3000});
        else
            server->stop();
        GatewayCall::AnswerTimeoutMs = 300;
        QElapsedTimer waited;
        waited.start();
        QVERIFY(!data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X")));
        GatewayCall::AnswerTimeoutMs = 30000;
        QVERIFY(waited.elapsed() < 2500);
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].text, kUnreachable);
    }

    // The second failing read is silent, and finds the dialog again unless it is active.
    void twoFailingReadsGiveOneMessage() {
        server->stop();
        data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X"));
        auto& dialog = Form<frmTLSettings>();
        dialog.hide();
        data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X"));
        QCOMPARE(boxes.size(), 1);
        QVERIFY(dialog.isVisible()); // shown again: it wasn't the active form
    }

    void twoFailingReadsWithTheDialogActive() {
        server->stop();
        data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X"));
        auto& dialog = Form<frmTLSettings>();
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QCOMPARE(FormRegistry::instance().activeForm(), &dialog);
        const auto loads = FormRegistry::instance().loadedNames();
        data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X"));
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(FormRegistry::instance().loadedNames(), loads);
    }

    void aFailingWriteIsLostQuietly() {
        server->stop();
        data().ConnectionEnabled = true;
        data().blnErrored = false;
        data().ExecuteSQLFromWeb(QStringLiteral("EXEC tl_X 1"));
        QVERIFY(boxes.isEmpty());
        QVERIFY(!data().ConnectionEnabled);
        QVERIFY(!data().blnErrored);
        QVERIFY(!IsLoaded<frmTLSettings>());
    }

    void newSystemNumber() {
        QCOMPARE(data().NewSystemNumber(1), 0);
        QVERIFY(server->requests().isEmpty());
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].text, QStringLiteral("Invalid SysType: SysType = 1.  "
                                               "(DataAccess::NewSystemNumber)\r\nPlease contact "
                                               "your System Administrator."));

        server->setAnswer(
            {200, "text/xml", oneColumnRowset(QStringLiteral("NextAvailableSys"), 41), 0});
        QCOMPARE(data().NewSystemNumber(2600), 41);
        QCOMPARE(server->requests().last().body,
                 QByteArray("strSQL=EXECUTE%20GetSysVB%20%27Note%27"));

        server->setAnswer(
            {200, "text/xml", oneColumnRowset(QStringLiteral("NextAvailableSys"), QVariant()), 0});
        QCOMPARE(data().NewSystemNumber(3700), 0);
        QVERIFY(boxes.last().text.startsWith(QStringLiteral("SysType not found: SysType = 3700.")));

        wire::Rowset none;
        none.columns.push_back({QStringLiteral("NextAvailableSys"),
                                QStringLiteral("NextAvailableSys"),
                                1,
                                wire::FieldType::I4,
                                {},
                                -1,
                                true});
        server->setAnswer({200, "text/xml", wire::RowsetWriter::write(none), 0});
        QCOMPARE(data().NewSystemNumber(2000), 0);
        QVERIFY(
            boxes.last().text.startsWith(QStringLiteral("SysType not available: SysType = 2000.")));
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestGateway)
#include "tst_gateway.moc"
