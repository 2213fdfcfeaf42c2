#include "FreshUserFolders.h"
#include "StubGateway.h"
#include "base/MsgBox.h"
#include "base/TLError.h"
#include "shell/AppVersion.h"
#include "shell/TLMain.h"
#include "support/modTLErrorManagement.h"

#include <QApplication>
#include <QtTest>

// The central error reporter: log line, box, statement to the server, log removed.
class TestReportAnomaly : public QObject {
    Q_OBJECT
    std::unique_ptr<TestHttpServer> server;
    QList<MsgBoxCall> boxes;
    QTemporaryDir folder;
    QStringList logAtBox; // the log's lines while the box was up

    // Reports a failure in flight, as a trap does.
    QString report(const QString& procedure, QString text, std::int32_t number,
                   const QString& description) {
        try {
            Raise(number, description);
        } catch (...) {
            modTLErrorManagement::ReportAnomaly(procedure, text, number);
        }
        return text;
    }
    QString postedStatement() const { return PostedStatements(*server).value(0); }

private slots:
    void init() {
        QVERIFY(QDir::setCurrent(folder.path()));
        server = std::make_unique<TestHttpServer>();
        TLMain().Settings().SetWebAddress(server->baseUrl());
        boxes.clear();
        logAtBox.clear();
        SetMsgBoxHook([this](const MsgBoxCall& call) {
            boxes << call;
            QFile log(QStringLiteral("brelo.log"));
            if (log.open(QIODevice::ReadOnly))
                logAtBox =
                    QString::fromLatin1(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            return int(vb::vbOK);
        });
    }

    // Nobody signed in: the user and contact keys are 0.
    void aReportReachesLogBoxAndServer() {
        const QString text = report(QStringLiteral("frmTLView:LoadGrid"),
                                    QStringLiteral("Can't load"), 5, QStringLiteral("It's bad"));
        QCOMPARE(text, QStringLiteral("Can't load: It*s bad")); // only the description's quotes go
        QCOMPARE(logAtBox, QStringList{QStringLiteral(
                               "Can't load: It*s bad|~~|5|~~|frmTLView:LoadGrid|~~|0|~~|")});
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].title, QStringLiteral("Anomaly Report ::frmTLView:LoadGrid"));
        QCOMPARE(boxes[0].icon(), int(vb::vbCritical));
        QCOMPARE(boxes[0].text, text);
        QCOMPARE(server->requests().size(), 1);
        const QString expected =
            QStringLiteral("EXECUTE LogAnomaly 'Can't load: It*s bad',5,"
                           "'frmTLView:LoadGrid','tst_reportanomaly %1',0,'','%2'")
                .arg(AppVersion::Text(), TLMain().ComputerName());
        QCOMPARE(postedStatement(), expected);
        QVERIFY(!QFile::exists(QStringLiteral("brelo.log")));
    }

    void longTextsAreCut() {
        const QString text = report(QStringLiteral("p"), QString(300, QLatin1Char('x')), 91,
                                    QStringLiteral("Object variable not set"));
        QCOMPARE(text, QString(250, QLatin1Char('x')));
        QVERIFY(postedStatement().startsWith(QStringLiteral("EXECUTE LogAnomaly '") + text +
                                             QStringLiteral("',91,")));
    }

    void aFailedSendLeavesNoLog() {
        server->stop();
        report(QStringLiteral("p"), QStringLiteral("t"), 5, QStringLiteral("d"));
        QCOMPARE(boxes.size(), 1);
        QVERIFY(!QFile::exists(QStringLiteral("brelo.log")));
    }

    // A log that can't be written ends the report: no box, nothing sent.
    void anUnwritableLogEndsTheReport() {
        QVERIFY(QDir().mkdir(QStringLiteral("brelo.log")));
        report(QStringLiteral("p"), QStringLiteral("t"), 5, QStringLiteral("d"));
        QVERIFY(boxes.isEmpty());
        QVERIFY(server->requests().isEmpty());
        QDir().rmdir(QStringLiteral("brelo.log"));
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestReportAnomaly)
#include "tst_reportanomaly.moc"
