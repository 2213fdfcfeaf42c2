#include "FreshUserFolders.h"
#include "BoxRecorder.h"
#include "Rows.h"
#include "TestHttpServer.h"
#include "base/Forms.h"
#include "config/frmTLSettings.h"
#include "directory/TLContact.h"
#include "directory/TLStatus.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "wire/FormEncoding.h"
#include "wire/RowsetWriter.h"
#include <QApplication>
#include <QtTest>

// A status change as the server receives it, and the person's details and status as read.
class TestContactStatus : public QObject {
    Q_OBJECT
    std::unique_ptr<TestHttpServer> server;
    BoxRecorder boxes;

    QStringList sent() const {
        QStringList statements;
        for (const auto& request : server->requests())
            statements << wire::form::field(request.body, "strSQL").value_or(QString());
        return statements;
    }

    static QByteArray statusRow(int statusSys, const QString& text) {
        wire::Rowset r;
        r.columns.push_back({"StatusSys", "StatusSys", 1, wire::FieldType::I4, {}, -1, true});
        r.columns.push_back({"Status", "Status", 2, wire::FieldType::String, {}, -1, true});
        r.rows.push_back({statusSys, text});
        return wire::RowsetWriter::write(r);
    }

private slots:
    void initTestCase() {
        Form<frmTLSettings>(); // its first load reads the stored settings over the live ones
        auto status = std::make_shared<TLStatus>();
        status->StatusSys = 8;
        status->StatusText = QStringLiteral("Out");
        modTLMain::colStatuses().Add(status, status->Key());
    }
    void init() {
        server = std::make_unique<TestHttpServer>();
        TLMain().Settings().SetWebAddress(server->baseUrl());
        boxes.install();
    }

    void statementArguments_data() {
        columns<QString, QString, QString, QString>("date", "time", "comment", "statement");
        row("nothing", "", "", "", "EXEC tl_SetStatus 12,8,NULL,NULL,NULL,0");
        row("the word NULL", "NULL", "NULL", "", "EXEC tl_SetStatus 12,8,NULL,NULL,NULL,0");
        row("apostrophe doubled", "", "", "Bob's party",
            "EXEC tl_SetStatus 12,8,NULL,NULL,'Bob''s party',0");
        row("time alone", "", "10:30 AM", "", "EXEC tl_SetStatus 12,8,NULL,'10:30 AM',NULL,0");
        row("date alone, blank trimmed", "11/25/2026", "", "",
            "EXEC tl_SetStatus 12,8,'11/25/2026',NULL,NULL,0");
        row("date and time", "11/5/2026", "2:15 PM", "Dentist",
            "EXEC tl_SetStatus 12,8,'11/05/2026 2:15 PM','2:15 "
            "PM','Dentist',0");
        row("time that is no time stays behind the date", "11/25/2026", "soon", "",
            "EXEC tl_SetStatus 12,8,'11/25/2026 soon',NULL,NULL,0");
    }
    void statementArguments() {
        QFETCH(QString, date);
        QFETCH(QString, time);
        QFETCH(QString, comment);
        QFETCH(QString, statement);
        TLContact colleague;
        colleague.UpdateContactStatus(12, 8, date, time, comment);
        QCOMPARE(sent().value(0), statement);
        QCOMPARE(colleague.ContactSys, 12);
        QVERIFY(boxes.isEmpty());
    }

    // A status missing from the list fails after the server got it, and is reported.
    void unknownStatusIsSentThenReported() {
        TLContact colleague;
        colleague.UpdateContactStatus(12, 42, QString(), QString(), QString());
        QCOMPARE(sent().value(0), QStringLiteral("EXEC tl_SetStatus 12,42,NULL,NULL,NULL,0"));
        QCOMPARE(boxes.size(), 1);
        QVERIFY(boxes[0].title.endsWith(QStringLiteral("TLContact:UpdateContactStatus")));
    }

    void contactStatusIsRead() {
        server->setAnswer({200, "text/xml", statusRow(6, QStringLiteral("Unavailable")), 0});
        TLContact contact;
        contact.OrganizationSys = 4;
        const auto status = contact.GetContactStatus(1007);
        QCOMPARE(sent().value(0), QStringLiteral("EXEC tl_GetUserStatuses NULL,1007,4,NULL"));
        QCOMPARE(status->StatusSys, 6);
        QCOMPARE(status->StatusText, QStringLiteral("Unavailable"));
    }

    // No answer: an empty status, and only the gateway's own message.
    void contactStatusWithoutServer() {
        server->stop();
        TLMain().DataAccess().blnErrored = false;
        const auto status = TLContact().GetContactStatus(1007);
        QCOMPARE(status->StatusSys, 0);
        QCOMPARE(boxes.size(), 1);
        QVERIFY(boxes[0].text.startsWith(QStringLiteral("Tavlo is unable to contact the server.")));
        Unload<frmTLSettings>();
        Form<frmTLSettings>();
    }

    void detailsKeepTheRecordWhenEmpty() {
        TLContact contact;
        contact.FirstName = QStringLiteral("Kept");
        wire::Rowset empty;
        empty.columns.push_back(
            {"FirstName", "FirstName", 1, wire::FieldType::String, {}, -1, true});
        server->setAnswer({200, "text/xml", wire::RowsetWriter::write(empty), 0});
        contact.LoadContactDetails(-1);
        QCOMPARE(sent().value(0), QStringLiteral("tl_GetContactInformation 0"));
        QCOMPARE(contact.FirstName, QStringLiteral("Kept"));

        server->setAnswer({200, "text/xml", statusRow(3, QStringLiteral("In")), 0});
        contact.LoadContactDetails(1003);
        QCOMPARE(sent().value(1), QStringLiteral("tl_GetContactInformation 1003"));
        QCOMPARE(contact.ContactSys, 1003);
        QVERIFY(boxes.isEmpty());
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestContactStatus)
#include "tst_contactstatus.moc"
