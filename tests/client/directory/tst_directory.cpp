#include "FreshUserFolders.h"
#include "Rows.h"
#include "Rowsets.h"
#include "StubGateway.h"
#include "base/Clock.h"
#include "base/Forms.h"
#include "config/frmTLSettings.h"
#include "directory/DirectoryLoaders.h"
#include "directory/TLContact.h"
#include "directory/TLOrganization.h"
#include "directory/TLStatus.h"
#include "directory/TLStatusRow.h"
#include "shell/modTLMain.h"
#include "wire/Recordset.h"
#include <QApplication>
#include <QComboBox>
#include <QtTest>

namespace {

// A one-record result with the given columns and values.
wire::Recordset record(const QStringList& names, const QVariantList& values) {
    return wire::Recordset(RowsetOf(names, {values}));
}

} // namespace

// The records, which fill themselves from any result that holds some of their columns; the
// returning moment as the board words it; the organisation's lists as sign-in loads them and a
// status change as the server receives it, against a stub server.
class TestDirectory : public QObject {
    Q_OBJECT
    std::unique_ptr<TestHttpServer> server;
    BoxRecorder boxes;

    QStringList sent() const { return PostedStatements(*server); }

private slots:
    void init() {
        Form<frmTLSettings>(); // its first load reads the stored settings over the live ones
        PointAtFreshStub(server, boxes);
        TLMain().ActiveOrganization().OrganizationSys = 4;
        modTLMain::ClearStatuses(); // the list of statuses holds Out (8) only
        auto out = std::make_shared<TLStatus>();
        out->StatusSys = 8;
        out->StatusText = QStringLiteral("Out");
        modTLMain::colStatuses().Add(out, out->Key());
    }

    // A record fills itself from whatever columns a result holds, so in layers: a missing or
    // Null column keeps the field, text is trimmed (user names not), a number that can't be read
    // is kept.
    void recordsFillInLayers() {
        TLContact contact;
        const auto narrow = record({"ContactSys", "FirstName", "LastName", "UserName", "Ext"},
                                   {12, "Ann  ", "Lee", " ann ", " 204 "});
        const auto wide =
            record({"FirstName", "EmailAddress", "ShowHomeInfo", "UserSys", "HomeEMail"},
                   {QVariant(), "ann@x.org", " 1 ", "not a number", "a@home"});
        contact.FillObjectWithRecordSet(&narrow);
        contact.FillObjectWithRecordSet(&wide);
        contact.FillObjectWithRecordSet(nullptr); // no result at all: nothing changes
        QCOMPARE(QStringList({contact.FullName(), contact.LastNameFirstName(), contact.UserName,
                              contact.Extension, contact.EmailAddress, contact.HomeEMailAddress})
                     .join('|'),
                 QStringLiteral("Ann Lee|Lee, Ann| ann |204|ann@x.org|a@home"));
        QCOMPARE((QList<int>{contact.ContactSys, contact.ShowHomeInfo, contact.UserSys}),
                 (QList<int>{12, 1, 0}));
    }

    // A record's key carries its sign in a letter, so that no key reads as a position; zero
    // counts as positive.
    void keysCarryTheirSign() {
        TLContact contact;
        TLOrganization organization;
        organization.OrganizationSys = 3;
        QCOMPARE(QStringList({contact.Key(), organization.Key()}), QStringList({"P0", "P3"}));
    }

    // Today is Wednesday 11/18/2026 at 9:00 AM.
    void returning_data() {
        columns<int, QString, QString, QString, QString>("statusSys", "stored", "text", "date",
                                                         "time");
        const QString u = QStringLiteral("Unspecified");
        row("in hides both", 3, "11/20/2026 5:00 PM", "11/20/2026 5:00 PM", "", "");
        row("literal 00", 8, "01/01/00 12:00AM", u, u, "");
        row("literal 01", 8, "01/01/01 12:00AM", u, u, "");
        row("no date", 8, "next week", "next week", u, "");
        row("unknown with time", 8, "1/1/1900 3:30 PM", "1/1/1900 3:30 PM", "Unknown", "3:30 PM");
        row("1901", 8, "1/1/1901 8:00 AM", "1/1/1901 8:00 AM", u, "8:00 AM");
        row("today", 6, "11/18/2026 5:05 PM", "11/18/2026 5:05 PM", "TODAY", "5:05 PM");
        row("tomorrow", 8, "11/19/2026 8:00 AM", "11/19/2026 8:00 AM", "TOMORROW", "8:00 AM");
        row("in two days", 8, "11/20/2026", "11/20/2026", "FRIDAY", "12:00 AM");
        row("sunday", 8, "11/22/2026 9:00 AM", "11/22/2026 9:00 AM", "SUNDAY", "9:00 AM");
        row("in six days", 8, "11/24/2026 1:15 PM", "11/24/2026 1:15 PM", "TUESDAY", "1:15 PM");
        row("in seven days", 8, "11/25/2026 1:15 PM", "11/25/2026 1:15 PM", "11/25/2026",
            "1:15 PM");
    }
    void returning() {
        auto [statusSys, stored, text, date, time] = fetch<int, QString, QString, QString, QString>(
            "statusSys", "stored", "text", "date", "time");
        Clock::SetFixed(QDateTime(QDate(2026, 11, 18), QTime(9, 0)));
        TLStatusRow row;
        row.Status().StatusSys = statusSys;
        row.SetReturningText(stored);
        QCOMPARE(row.ReturningText(), text);
        QCOMPARE(row.ReturningDate(), date);
        QCOMPARE(row.ReturningTime(), time);
        Clock::Release();
    }

    void statementArguments_data() {
        columns<QString, QString, QString, QString>("date", "time", "comment", "statement");
        row("time alone", "", "10:30 AM", "", "EXEC tl_SetStatus 12,8,NULL,'10:30 AM',NULL,0");
        row("date alone, blank trimmed", "11/25/2026", "", "",
            "EXEC tl_SetStatus 12,8,'11/25/2026',NULL,NULL,0");
        row("date and time", "11/5/2026", "2:15 PM", "Dentist",
            "EXEC tl_SetStatus 12,8,'11/05/2026 2:15 PM','2:15 PM','Dentist',0");
        row("time that is no time stays behind the date", "11/25/2026", "soon", "",
            "EXEC tl_SetStatus 12,8,'11/25/2026 soon',NULL,NULL,0");
    }
    void statementArguments() {
        auto [date, time, comment, statement] =
            fetch<QString, QString, QString, QString>("date", "time", "comment", "statement");
        TLContact().UpdateContactStatus(12, 8, date, time, comment);
        QCOMPARE(sent().value(0), statement);
        QVERIFY(boxes.isEmpty());
    }

    // A status missing from the list fails after the server got it, and is reported.
    void unknownStatusIsSentThenReported() {
        TLContact().UpdateContactStatus(12, 42, QString(), QString(), QString());
        QCOMPARE(sent().value(0), QStringLiteral("EXEC tl_SetStatus 12,42,NULL,NULL,NULL,0"));
        QCOMPARE(boxes.size(), 1);
        QVERIFY(boxes[0].title.endsWith(QStringLiteral("TLContact:UpdateContactStatus")));
    }

    // No answer: an empty status, and only the gateway's own message.
    void contactStatusWithoutServer() {
        server->stop();
        TLMain().DataAccess().blnErrored = false;
        QCOMPARE(TLContact().GetContactStatus(1007)->StatusSys, 0);
        QCOMPARE(boxes.size(), 1);
        QVERIFY(boxes[0].text.startsWith(QStringLiteral("Tavlo is unable to contact the server.")));
        Unload<frmTLSettings>();
        Form<frmTLSettings>();
    }

    // Statuses keep the server's order and are found by number; a number twice is reported
    // and the first kept.
    void statusesInServerOrder() {
        server->setAnswer(
            {200, "text/xml",
             RowsetBytes({"StatusSys", "Status"}, {{8, "Out"}, {3, "In"}, {3, "In again"}}), 0});
        LoadAvailableStatuses();
        QCOMPARE(modTLMain::colStatuses().Count(), 2L);
        QCOMPARE(modTLMain::colStatuses()[1]->StatusText, QStringLiteral("Out"));
        QCOMPARE(modTLMain::colStatuses()[QStringLiteral("3")]->StatusText, QStringLiteral("In"));
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].title, QStringLiteral("Anomaly Report ::LoadAvailableStatuses"));
    }

    void locations_data() {
        columns<int, QString, int>("setting", "selected", "settingAfter");
        row("no choice, no home location", 0, "<All>", 0);
        row("stored choice wins", 1, "Main Office", 1);
        row("gone location", 9, "<All>", 9);
    }
    void locations() {
        auto [setting, selected, settingAfter] =
            fetch<int, QString, int>("setting", "selected", "settingAfter");
        auto& combo = *Form<frmTLSettings>().cboLocation;
        server->setAnswer({200, "text/xml",
                           RowsetBytes({"LocationName", "OrganizationLocationSys"},
                                       {{"Main Office", 1}, {"Warehouse", 2}}),
                           0});
        TLMain().Settings().SetOrganizationLocationSys(setting);
        TLMain().SetActiveUser(nullptr); // nobody signed in: no home location
        LoadAvailableLocations(&combo);
        QCOMPARE(combo.count(), 3);
        QCOMPARE(combo.itemData(2).toInt(), 2);
        QCOMPARE(combo.currentText(), selected);
        QCOMPARE(TLMain().Settings().OrganizationLocationSys(), settingAfter);
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestDirectory)
#include "tst_directory.moc"
