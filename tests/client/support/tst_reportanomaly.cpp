#include "FreshUserFolders.h"
#include "Rows.h"
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

    void aReportReachesLogBoxAndServer_data() {
        columns<QString, QString, QString>("text", "description", "reported");
        row("only the description's quotes go", "Can't load", "It's bad", "Can't load: It*s bad");
        row("cut at 250", QString(300, QLatin1Char('x')), "Object variable not set",
            QString(250, QLatin1Char('x')));
    }
    // Nobody signed in: the user and contact keys are 0.
    void aReportReachesLogBoxAndServer() {
        auto [text, description, reported] =
            fetch<QString, QString, QString>("text", "description", "reported");
        QCOMPARE(report(QStringLiteral("frmTLView:LoadGrid"), text, 5, description), reported);
        QCOMPARE(logAtBox, QStringList{reported + "|~~|5|~~|frmTLView:LoadGrid|~~|0|~~|"});
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].title, QStringLiteral("Anomaly Report ::frmTLView:LoadGrid"));
        QCOMPARE(boxes[0].icon(), int(vb::vbCritical));
        QCOMPARE(boxes[0].text, reported);
        QCOMPARE(PostedStatements(*server),
                 QStringList{QStringLiteral("EXECUTE LogAnomaly '%1',5,'frmTLView:LoadGrid',"
                                            "'tst_reportanomaly %2',0,'','%3'")
                                 .arg(reported, AppVersion::Text(), TLMain().ComputerName())});
        QVERIFY(!QFile::exists(QStringLiteral("brelo.log")));
    }

    // A log that can't be written ends the report: no box, nothing sent. A failed send still
    // removes the log.
    void failuresOnTheWay() {
        QVERIFY(QDir().mkdir(QStringLiteral("brelo.log")));
        report(QStringLiteral("p"), QStringLiteral("t"), 5, QStringLiteral("d"));
        QVERIFY(boxes.isEmpty());
        QVERIFY(server->requests().isEmpty());
        QVERIFY(QDir().rmdir(QStringLiteral("brelo.log")));
        server->stop();
        report(QStringLiteral("p"), QStringLiteral("t"), 5, QStringLiteral("d"));
        QCOMPARE(boxes.size(), 1);
        QVERIFY(!QFile::exists(QStringLiteral("brelo.log")));
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestReportAnomaly)
#include "tst_reportanomaly.moc"
