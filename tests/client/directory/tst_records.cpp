#include "base/Clock.h"
#include "directory/TLContact.h"
#include "directory/TLGroup.h"
#include "directory/TLOrganization.h"
#include "directory/TLStatus.h"
#include "directory/TLStatusRow.h"
#include "wire/Recordset.h"

#include "Rows.h"
#include <QCoreApplication>
#include <QtTest>

namespace {

// A one-record result with the given columns (all text unless the value says otherwise).
wire::Recordset record(const QList<QPair<QString, QVariant>>& columns) {
    wire::Rowset rowset;
    std::vector<QVariant> row;
    int number = 1;
    for (const auto& [name, value] : columns) {
        wire::FieldType type = wire::FieldType::String;
        if (value.typeId() == QMetaType::Int || value.typeId() == QMetaType::LongLong)
            type = wire::FieldType::I4;
        rowset.columns.push_back({name, name, number++, type, {}, -1, true});
        row.push_back(value);
    }
    rowset.rows.push_back(row);
    return wire::Recordset(rowset);
}

} // namespace

// The records fill themselves from any result that holds some of their columns.
class TestRecords : public QObject {
    Q_OBJECT

private slots:
    void nullAndMissingColumnsKeepTheFields() {
        TLStatus status;
        status.ColorCode = QStringLiteral("old");
        status.StatusPictureLocation = QStringLiteral("pic");
        const auto rs = record({{QStringLiteral("StatusSys"), 8},
                                {QStringLiteral("Status"), QStringLiteral("  Out  ")},
                                {QStringLiteral("StatusPictureLocation"), QVariant()}});
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
        const auto narrow = record({{QStringLiteral("ContactSys"), 12},
                                    {QStringLiteral("FirstName"), QStringLiteral("Ann  ")},
                                    {QStringLiteral("LastName"), QStringLiteral("Lee")},
                                    {QStringLiteral("UserName"), QStringLiteral(" ann ")},
                                    {QStringLiteral("Ext"), QStringLiteral(" 204 ")}});
        contact.FillObjectWithRecordSet(&narrow);
        const auto wide = record({{QStringLiteral("FirstName"), QVariant()},
                                  {QStringLiteral("EmailAddress"), QStringLiteral("ann@x.org")},
                                  {QStringLiteral("ShowHomeInfo"), QStringLiteral(" 1 ")},
                                  {QStringLiteral("UserSys"), QStringLiteral("not a number")},
                                  {QStringLiteral("HomeEMail"), QStringLiteral("a@home")}});
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
        const auto rs = record({{QStringLiteral("GroupSys"), 4},
                                {QStringLiteral("OrganizationSys"), -3},
                                {QStringLiteral("Name"), QStringLiteral(" Sales ")},
                                {QStringLiteral("Description"), QStringLiteral("Field team")}});
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
        QFETCH(int, sys);
        QFETCH(QString, key);
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
        row("in six days", 8, "11/24/2026 1:15 PM", "11/24/2026 1:15 PM", "TUESDAY", "1:15 PM");
        row("in seven days", 8, "11/25/2026 1:15 PM", "11/25/2026 1:15 PM", "11/25/2026",
            "1:15 PM");
        row("yesterday", 8, "11/17/2026 4:00 PM", "11/17/2026 4:00 PM", "11/17/2026", "4:00 PM");
        row("status never filled", 0, "11/19/2026", "11/19/2026", "TOMORROW", "12:00 AM");
    }
    void returning() {
        QFETCH(int, statusSys);
        QFETCH(QString, stored);
        QFETCH(QString, text);
        QFETCH(QString, date);
        QFETCH(QString, time);
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

    void dayNames() {
        QCOMPARE(TLStatusRow::GetDayOfWeek(1), QStringLiteral("MONDAY"));
        QCOMPARE(TLStatusRow::GetDayOfWeek(7), QStringLiteral("SUNDAY"));
        QCOMPARE(TLStatusRow::GetDayOfWeek(0), QString());
        QCOMPARE(TLStatusRow::GetDayOfWeek(8), QString());
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
