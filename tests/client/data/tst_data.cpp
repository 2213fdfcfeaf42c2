#include "FreshUserFolders.h"
#include "StubGateway.h"
#include "base/Clock.h"
#include "base/Forms.h"
#include "base/MsgBox.h"
#include "config/frmTLSettings.h"
#include "data/GatewayCall.h"
#include "data/TLDataAccess.h"
#include "data/TLFunctions.h"
#include "shell/TLMain.h"

#include "Rows.h"
#include "Rowsets.h"
#include <QApplication>
#include <QtTest>

namespace {

QByteArray oneColumnRowset(const char* column, const QVariant& value) {
    return RowsetBytes({column}, {{value}});
}

const QString kUnreachable = QStringLiteral("Tavlo is unable to contact the server.\r\rPlease "
                                            "check the connection settings.");

} // namespace

// The password cipher, the colours, values into and out of statements, and the gateway against
// a real HTTP server on a loopback port.
class TestData : public QObject {
    Q_OBJECT
    std::unique_ptr<TestHttpServer> server;
    BoxRecorder boxes;

    TLFunctions f;
    TLDataAccess values;

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

    // The password cipher undoes itself. 'a' (0x61) ^ 'q' (0x71) ^ '%' (0x25) is '5', and the
    // twentieth character wraps to the first byte of both keys.
    void passwordCipher() {
        QCOMPARE(f.EncodeDecode(QStringLiteral("a")), QStringLiteral("5"));
        QCOMPARE(f.EncodeDecode(QString(20, QLatin1Char('a'))).at(19), QLatin1Char('5'));
        for (const QString text : {"a password longer than nineteen characters", "Müller€ß", ""})
            QCOMPARE(f.EncodeDecode(f.EncodeDecode(text)), text);
    }

    void dbIn_data() {
        columns<QString, bool, bool, QString>("text", "nullWhenEmpty", "wildcard", "result");
        row("apostrophe", "O'Brien", false, false, "'O''Brien'");
        row("trimmed", "  Ann  ", false, false, "'Ann'");
        row("blanks, quotes", "   ", false, false, "''");
        row("blanks, null", "   ", true, false, "NULL");
        row("wildcard", "Smi", false, true, "'Smi%'");
        row("wildcard, null flag", "Smi", true, true, "'Smi%'");
        row("line break kept", " Back at 2\r\n", false, false, "'Back at 2\r\n'");
        row("tab kept", "\tLunch ", false, false, "'\tLunch'");
        row("tab alone is text", "\t", true, false, "'\t'");
    }
    void dbIn() {
        auto [text, nullWhenEmpty, wildcard, result] =
            fetch<QString, bool, bool, QString>("text", "nullWhenEmpty", "wildcard", "result");
        QCOMPARE(values.DBIn(text, nullWhenEmpty, wildcard), result);
    }

    void valuesOut() {
        QCOMPARE(values.DBOStr(QVariant()), QString());
        QCOMPARE(values.DBOStr(QStringLiteral("  x  ")), QStringLiteral("x"));
        QCOMPARE(values.DBOStr(QStringLiteral("\tx\r\n ")), QStringLiteral("\tx\r\n"));
        QCOMPARE(values.DBOStr(QVariant(true)), QStringLiteral("True"));
        QCOMPARE(values.DBOStr(QVariant(qlonglong(42))), QStringLiteral("42"));
        QCOMPARE(values.DBOLong(QVariant()), 0);
        QCOMPARE(values.DBOLong(QStringLiteral("12ab")), 12);
        QCOMPARE(values.DBOLong(QVariant(2.5)), 2);
        QCOMPARE(values.DBOLong(QVariant(qlonglong(-2147483648LL))), INT32_MIN);
        QCOMPARE(values.DBOLong(QVariant(qlonglong(2147483648LL))), 0); // overflow ends quietly
        QCOMPARE(values.DBOLong(QVariant(true)), 0);                    // "True" reads as no number
    }

    void backColours() {
        QCOMPARE(f.GetBackColorValue(QStringLiteral("FF8000")), 0x0080FF);
        QCOMPARE(f.GetBackColorValue(QStringLiteral("00c000")), 0x00C000);
        QCOMPARE(f.GetBackColorValue(QStringLiteral("FFFFF")), 0xFFFFFF); // not six digits: white
    }

    void theRequestIsExact() {
        data().ExecuteSQLFromWeb(QStringLiteral("EXEC tl_SetStatus 12,8,NULL,NULL,'it''s',15"));
        QCOMPARE(server->requests().size(), 1);
        const auto request = server->requests().at(0);
        QCOMPARE(request.header("lastCached"), QByteArray("11/18/2026 9:05:07 AM"));
        QCOMPARE(request.body, QByteArray("strSQL=EXEC%20tl%5FSetStatus%2012%2C8%2CNULL%2CNULL%2C"
                                          "%27it%27%27s%27%2C15"));
        QVERIFY(data().OnceConnected);
        QVERIFY(boxes.isEmpty());
    }

    // A read that comes back as a rowset succeeds whatever the status code says.
    void aRowsetWithAnErrorStatusReads() {
        data().blnErrored = true;
        server->setAnswer({404, "text/html", oneColumnRowset("n", 7), 0});
        const auto rs = data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X"));
        QVERIFY(rs);
        QCOMPARE(rs->Fields(QStringLiteral("n")).Value().toInt(), 7);
        QVERIFY(!data().blnErrored);
        QVERIFY(boxes.isEmpty());
    }

    // Answers that are no rowset, a refused connection and a server that stops answering all
    // count as an unreachable server: one message, the settings dialog, no recordset.
    void unreachable_data() {
        columns<int, QByteArray, int>("status", "body", "delay"); // status 0: no server
        row("HTML 500", 500, QByteArray("<html><body>Server Error</body></html>"), 0);
        row("refused", 0, QByteArray(), 0);
        row("no answer in time", 200, oneColumnRowset("n", 1), 3000);
    }
    void unreachable() {
        auto [status, body, delay] = fetch<int, QByteArray, int>("status", "body", "delay");
        if (status == 0)
            server->stop();
        else
            server->setAnswer({status, "text/html", body, delay});
        data().ConnectionEnabled = true;
        GatewayCall::AnswerTimeoutMs = 300;
        QElapsedTimer waited;
        waited.start();
        const bool read = bool(data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X")));
        GatewayCall::AnswerTimeoutMs = 30000;
        QVERIFY(!read && waited.elapsed() < 2500);
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].text, kUnreachable);
        QCOMPARE(boxes[0].icon(), int(vb::vbCritical));
        QVERIFY(data().blnErrored);
        QVERIFY(!data().ConnectionEnabled);
        QVERIFY(IsLoaded<frmTLSettings>() && Form<frmTLSettings>().isVisible());
    }

    // The second failing read is silent, and shows the dialog again unless it is the active
    // form (which stays as it is).
    void twoFailingReadsGiveOneMessage() {
        server->stop();
        data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X"));
        auto& dialog = Form<frmTLSettings>();
        dialog.hide();
        data().LoadADOFromWeb(QStringLiteral("EXECUTE tl_X"));
        QVERIFY(dialog.isVisible());
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
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

        server->setAnswer({200, "text/xml", oneColumnRowset("NextAvailableSys", 41), 0});
        QCOMPARE(data().NewSystemNumber(2600), 41);
        QCOMPARE(server->requests().last().body,
                 QByteArray("strSQL=EXECUTE%20GetSysVB%20%27Note%27"));

        server->setAnswer({200, "text/xml", oneColumnRowset("NextAvailableSys", QVariant()), 0});
        QCOMPARE(data().NewSystemNumber(3700), 0);
        QVERIFY(boxes.last().text.startsWith(QStringLiteral("SysType not found: SysType = 3700.")));

        server->setAnswer({200, "text/xml", RowsetBytes({"NextAvailableSys"}, {}), 0});
        QCOMPARE(data().NewSystemNumber(2000), 0);
        QVERIFY(
            boxes.last().text.startsWith(QStringLiteral("SysType not available: SysType = 2000.")));
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestData)
#include "tst_data.moc"
