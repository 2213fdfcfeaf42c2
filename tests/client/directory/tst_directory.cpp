#include "FreshUserFolders.h"
#include "Rows.h"
#include "Rowsets.h"
#include "StubGateway.h"
#include "base/Clock.h"
#include "base/Forms.h"
#include "config/frmTLSettings.h"
#include "directory/DirectoryLoaders.h"
#include "directory/TLContact.h"
#include "directory/TLGroup.h"
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
// organisation's lists as sign-in loads them, a status change as the server receives it,
// and a person's details and status as read, against a stub server.
class TestDirectory : public QObject {
    Q_OBJECT
    std::unique_ptr<TestHttpServer> server;
    BoxRecorder boxes;

    QStringList sent() const { return PostedStatements(*server); }

    // The list of statuses holds Out (8) only.
    static void onlyOut() {
        modTLMain::ClearStatuses();
        auto status = std::make_shared<TLStatus>();
        status->StatusSys = 8;
        status->StatusText = QStringLiteral("Out");
        modTLMain::colStatuses().Add(status, status->Key());
    }

private slots:
    void init() {
        Form<frmTLSettings>(); // its first load reads the stored settings over the live ones
        PointAtFreshStub(server, boxes);
        TLMain().ActiveOrganization().OrganizationSys = 4;
        onlyOut();
    }

    void nullAndMissingColumnsKeepTheFields() {
        TLStatus status;
        status.ColorCode = QStringLiteral("old");
        status.StatusPictureLocation = QStringLiteral("pic");
        const auto rs = record({"StatusSys", "Status", "StatusPictureLocation"},
                               {8, QStringLiteral("  Out  "), QVariant()});
        status.FillObjectWithRecordSet(&rs);
        QCOMPARE(status.StatusSys, 8);
        QCOMPARE(status.StatusText, QStringLiteral("Out"));
        QCOMPARE(status.ColorCode, QStringLiteral("old"));             // column missing
        QCOMPARE(status.StatusPictureLocation, QStringLiteral("pic")); // column Null

        status.FillObjectWithRecordSet(nullptr); // no result at all: nothing changes
        QCOMPARE(status.StatusSys, 8);

        TLStatus copy;
        copy.CopyStatusObject(status);
        status.StatusText = QStringLiteral("changed");
        QCOMPARE(copy.StatusText, QStringLiteral("Out"));
        QCOMPARE(copy.ColorCode, QStringLiteral("old"));
    }

    // A narrow status result and then a wide card fill the same contact in layers.
    void contactFillsInLayers() {
        TLContact contact;
        const auto narrow = record({"ContactSys", "FirstName", "LastName", "UserName", "Ext"},
                                   {12, QStringLiteral("Ann  "), QStringLiteral("Lee"),
                                    QStringLiteral(" ann "), QStringLiteral(" 204 ")});
        contact.FillObjectWithRecordSet(&narrow);
        const auto wide =
            record({"FirstName", "EmailAddress", "ShowHomeInfo", "UserSys", "HomeEMail"},
                   {QVariant(), QStringLiteral("ann@x.org"), QStringLiteral(" 1 "),
                    QStringLiteral("not a number"), QStringLiteral("a@home")});
        contact.FillObjectWithRecordSet(&wide);
        QCOMPARE(contact.ContactSys, 12);
        QCOMPARE(contact.FullName(), QStringLiteral("Ann Lee"));
        QCOMPARE(contact.LastNameFirstName(), QStringLiteral("Lee, Ann"));
        QCOMPARE(contact.UserName, QStringLiteral(" ann ")); // user names are not trimmed
        QCOMPARE(contact.Extension, QStringLiteral("204"));
        QCOMPARE(contact.EmailAddress, QStringLiteral("ann@x.org"));
        QCOMPARE(contact.HomeEMailAddress, QStringLiteral("a@home"));
        QCOMPARE(contact.ShowHomeInfo, 1);
        QCOMPARE(contact.UserSys, 0); // unreadable number: the field stays
    }

    void groupsAndOrganizationsReadTheSameColumnsDifferently() {
        const auto rs = record({"GroupSys", "OrganizationSys", "Name", "Description"},
                               {4, -3, QStringLiteral(" Sales "), QStringLiteral("Field team")});
        TLGroup group;
        group.FillObjectWithRecordSet(&rs);
        TLOrganization organization;
        organization.FillObjectWithRecordSet(&rs);
        QCOMPARE(group.Name, QStringLiteral("Sales"));
        QCOMPARE(group.Key(), QStringLiteral("KEY4"));
        QCOMPARE(organization.OrganizationName, QStringLiteral("Sales"));
        QCOMPARE(organization.OrganizationDescription, QStringLiteral("Field team"));
        QCOMPARE(organization.Key(), QStringLiteral("N3"));
    }

    void keys_data() {
        columns<int, QString>("sys", "key");
        row("negative", -7, QStringLiteral("N7"));
        row("positive", 7, QStringLiteral("P7"));
        row("zero", 0, QStringLiteral("P0"));
        row("lowest", int(INT32_MIN), QStringLiteral("N2147483648"));
    }
    void keys() {
        auto [sys, key] = fetch<int, QString>("sys", "key");
        TLContact contact;
        contact.ContactSys = sys;
        QCOMPARE(contact.Key(), key);
        TLStatusRow row;
        row.Contact().ContactSys = sys;
        QCOMPARE(row.Key(), QString::number(sys)); // a board row's key has no letter
        QCOMPARE(row.KeyValue(), sys);
    }

    // Today is Wednesday 11/18/2026 at 9:00 AM.
    void returning_data() {
        columns<int, QString, QString, QString, QString>("statusSys", "stored", "text", "date",
                                                         "time");
        const QString u = QStringLiteral("Unspecified");
        row("in hides both", 3, "11/20/2026 5:00 PM", "11/20/2026 5:00 PM", "", "");
        row("literal 00", 8, "01/01/00 12:00AM", u, u, "");
        row("literal 01", 8, "01/01/01 12:00AM", u, u, "");
        row("literal spelt otherwise", 8, "01/01/00 12:00 AM", "01/01/00 12:00 AM", "1/1/2000",
            "12:00 AM");
        row("empty", 8, "", "", u, "");
        row("no date", 8, "next week", "next week", u, "");
        row("unknown with time", 8, "1/1/1900 3:30 PM", "1/1/1900 3:30 PM", "Unknown", "3:30 PM");
        row("unknown, zeros", 8, "01/01/1900", "01/01/1900", "Unknown", "12:00 AM");
        row("1901", 8, "1/1/1901 8:00 AM", "1/1/1901 8:00 AM", u, "8:00 AM");
        row("today", 6, "11/18/2026 5:05 PM", "11/18/2026 5:05 PM", "TODAY", "5:05 PM");
        row("tomorrow", 8, "11/19/2026 8:00 AM", "11/19/2026 8:00 AM", "TOMORROW", "8:00 AM");
        row("in two days", 8, "11/20/2026", "11/20/2026", "FRIDAY", "12:00 AM");
        row("sunday", 8, "11/22/2026 9:00 AM", "11/22/2026 9:00 AM", "SUNDAY", "9:00 AM");
        row("in six days", 8, "11/24/2026 1:15 PM", "11/24/2026 1:15 PM", "TUESDAY", "1:15 PM");
        row("in seven days", 8, "11/25/2026 1:15 PM", "11/25/2026 1:15 PM", "11/25/2026",
            "1:15 PM");
        row("yesterday", 8, "11/17/2026 4:00 PM", "11/17/2026 4:00 PM", "11/17/2026", "4:00 PM");
        row("status never filled", 0, "11/19/2026", "11/19/2026", "TOMORROW", "12:00 AM");
    }
    void returning() {
        auto [statusSys, stored, text, date, time] = fetch<int, QString, QString, QString, QString>(
            "statusSys", "stored", "text", "date", "time");
        Clock::SetFixed(QDateTime(QDate(2026, 11, 18), QTime(9, 0)));
        TLStatusRow row;
        if (statusSys != 0)
            row.Status().StatusSys = statusSys;
        row.SetReturningText(stored);
        QCOMPARE(row.ReturningText(), text);
        QCOMPARE(row.ReturningDate(), date);
        QCOMPARE(row.ReturningTime(), time);
        Clock::Release();
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
        auto [date, time, comment, statement] =
            fetch<QString, QString, QString, QString>("date", "time", "comment", "statement");
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
        server->setAnswer(
            {200, "text/xml", RowsetBytes({"StatusSys", "Status"}, {{6, "Unavailable"}}), 0});
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
        server->setAnswer({200, "text/xml", RowsetBytes({"FirstName"}, {}), 0});
        contact.LoadContactDetails(-1);
        QCOMPARE(sent().value(0), QStringLiteral("tl_GetContactInformation 0"));
        QCOMPARE(contact.FirstName, QStringLiteral("Kept"));

        server->setAnswer({200, "text/xml", RowsetBytes({"StatusSys", "Status"}, {{3, "In"}}), 0});
        contact.LoadContactDetails(1003);
        QCOMPARE(sent().value(1), QStringLiteral("tl_GetContactInformation 1003"));
        QCOMPARE(contact.ContactSys, 1003);
        QVERIFY(boxes.isEmpty());
    }

    void statusesInServerOrder() {
        server->setAnswer({200, "text/xml",
                           RowsetBytes({"StatusSys", "Status", "ColorCode"},
                                       {{8, "Out", "C00000"}, {3, "In", "00C000"}}),
                           0});
        LoadAvailableStatuses();
        QCOMPARE(sent(), QStringList{"EXECUTE tl_GetAvailableStatuses 4,0,0"});
        QCOMPARE(modTLMain::colStatuses().Count(), 2L);
        QCOMPARE(modTLMain::colStatuses()[1]->StatusText, QStringLiteral("Out"));
        QCOMPARE(GetObjectFromCollection(modTLMain::colStatuses(), QStringLiteral("3"))->StatusText,
                 QStringLiteral("In"));
        QVERIFY(!GetObjectFromCollection(modTLMain::colStatuses(), QStringLiteral("6")));
        QVERIFY(boxes.isEmpty());
    }

    // A second status of the same number fails on its key and is reported; the first stays.
    void duplicateStatusIsReported() {
        server->setAnswer({200, "text/xml",
                           RowsetBytes({"StatusSys", "Status"}, {{3, "In"}, {3, "In again"}}), 0});
        LoadAvailableStatuses();
        QCOMPARE(modTLMain::colStatuses().Count(), 1L);
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].title, QStringLiteral("Anomaly Report ::LoadAvailableStatuses"));
    }

    void groupsByKey() {
        server->setAnswer({200, "text/xml", RowsetBytes({"GroupSys", "Name"}, {{12, "Sales"}}), 0});
        LoadAvailableGroups(QStringLiteral("P4"));
        QCOMPARE(sent(), QStringList{"EXECUTE tl_GetOrganizationGroups 4"});
        QCOMPARE(modTLMain::colGroups()[QStringLiteral("KEY12")]->Name, QStringLiteral("Sales"));
    }

    void locations_data() {
        columns<int, QString, int>("setting", "selected", "settingAfter");
        row("no choice, no home location", 0, "<All>", 0);
        row("all chosen", -1, "<All>", -1);
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
