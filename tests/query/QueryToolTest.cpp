#include "Rows.h"
#include "Rowsets.h"
#include "TestHttpServer.h"
#include "wire/RowsetWriter.h"

#include <QProcess>
#include <QtTest>

using namespace wire;

namespace {

struct Run {
    int exitCode = -1;
    QString out;
    QString err;
};

Run runTool(const QStringList& args) {
    QProcess p;
    p.start(QStringLiteral(TAVLO_QUERY_BINARY), args);
    if (!p.waitForFinished(60000))
        qFatal("tavlo-query did not finish");
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAllStandardOutput()),
            QString::fromUtf8(p.readAllStandardError())};
}

// A small status answer: a number, texts with a Null and control characters, a date.
QByteArray statusRowset() {
    Rowset r = RowsetOf({"StatusSys", "Status", "comment", "Changed At"},
                        {{3, "In", QVariant(), QDateTime(QDate(2024, 1, 2), QTime(9, 5))},
                         {128, "Out to lunch", "a\tb\r\nc\\d", QVariant()}});
    r.columns[3].type = FieldType::DateTime;
    return RowsetWriter::write(r);
}

} // namespace

class QueryToolTest : public QObject {
    Q_OBJECT
private slots:
    void printsTheAnswerAsATableOrForMachines() {
        TestHttpServer server;
        server.setAnswer({200, "text/xml", statusRowset()});
        const QString sql = "EXEC tl_GetContactStatus 12";
        const Run run = runTool({"--url", server.baseUrl(), sql});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.err, QString());
        QCOMPARE(run.out, QString("StatusSys | Status       | comment     | Changed At\n"
                                  "----------+--------------+-------------+--------------------\n"
                                  "        3 | In           | NULL        | 2024-01-02T09:05:00\n"
                                  "      128 | Out to lunch | a\\tb\\r\\nc\\d | NULL\n"
                                  "(2 rows)\n"));
        // The statement went out exactly as the client would send it.
        const auto requests = server.requests();
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests[0].body, QByteArray("strSQL=EXEC%20tl%5FGetContactStatus%2012"));
        QVERIFY(!requests[0].header("lastCached").isEmpty());

        const Run tsv = runTool({"--tsv", "--url", server.baseUrl(), sql});
        QCOMPARE(tsv.exitCode, 0);
        QCOMPARE(tsv.out, QString("StatusSys\tStatus\tcomment\tChanged At\n"
                                  "3\tIn\t\\N\t2024-01-02T09:05:00\n"
                                  "128\tOut to lunch\ta\\tb\\r\\nc\\\\d\t\\N\n"));
    }

    // A rowset saved to a file, here UTF-16 as a stream save writes it.
    void readsASavedRowset() {
        const Run run = runTool({"--tsv", "--file", TAVLO_WIRE_SAMPLES "/utf16.xml"});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, QString("ContactSys\tLastName\n21\tMüller – Østergård €\n"));
    }

    // No server exits with 2, an answer that is no rowset with 3; one line says why.
    void failuresExitWithTheirNumber_data() {
        columns<int, QByteArray, int, QString>("status", "body", "exit", "said"); // 0: no server
        row("unreachable", 0, QByteArray(), 2, "tavlo-query: cannot reach http://127.0.0.1:");
        row("empty", 200, QByteArray(), 3, "(HTTP 200)");
        row("error page", 500, QByteArray("<html><body>Error</body></html>"), 3, "(HTTP 500)");
    }
    void failuresExitWithTheirNumber() {
        auto [status, body, exit, said] =
            fetch<int, QByteArray, int, QString>("status", "body", "exit", "said");
        TestHttpServer server;
        if (status == 0)
            server.stop();
        server.setAnswer({status, "text/html", body});
        const Run run = runTool({"--url", server.baseUrl(), "EXEC tl_x 1"});
        QCOMPARE(run.exitCode, exit);
        QVERIFY(run.out.isEmpty());
        QVERIFY2(run.err.contains(said), qPrintable(run.err));
        QCOMPARE(run.err.count('\n'), 1);
    }

    void badUsageExitsWith1_data() {
        columns<QStringList>("args");
        const QString url = "http://127.0.0.1:1";
        row("nothing", QStringList{});
        row("both sources", QStringList{"--url", url, "--file", "x.xml", "EXEC tl_x"});
        row("no statement", QStringList{"--url", url});
        row("two statements", QStringList{"--url", url, "EXEC tl_x", "EXEC tl_y"});
        row("sign-in without a server", QStringList{"--sign-in", "ann", "--file", "x"});
        row("password file alone", QStringList{"--password-file", "pw", "--url", url, "EXEC tl_x"});
        row("unreadable password file", QStringList{"--sign-in", "ann", "--password-file",
                                                    "/nonexistent/pw", "--url", url, "EXEC tl_x"});
        row("bad time-out", QStringList{"--timeout", "soon", "--url", url, "EXEC tl_x"});
        row("missing file", QStringList{"--file", "/nonexistent/answer.xml"});
    }
    void badUsageExitsWith1() {
        QFETCH(QStringList, args);
        const Run run = runTool(args);
        QCOMPARE(run.exitCode, 1);
        QVERIFY(run.err.startsWith("tavlo-query: "));
        QCOMPARE(run.err.count('\n'), 1);
    }
};

QTEST_GUILESS_MAIN(QueryToolTest)
#include "QueryToolTest.moc"
