#include "FreshUserFolders.h"
#include "BoxRecorder.h"
#include "TestHttpServer.h"
#include "base/Forms.h"
#include "config/frmTLSettings.h"
#include "directory/DirectoryLoaders.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "wire/RowsetWriter.h"

#include "Rows.h"
#include <QApplication>
#include <QComboBox>
#include <QtTest>

namespace {

QByteArray rowset(const QStringList& names, const QList<QVariantList>& rows) {
    wire::Rowset r;
    for (int i = 0; i < names.size(); ++i)
        r.columns.push_back({names[i],
                             names[i],
                             i + 1,
                             rows.isEmpty() || rows[0][i].typeId() == QMetaType::QString
                                 ? wire::FieldType::String
                                 : wire::FieldType::I4,
                             {},
                             -1,
                             true});
    for (const auto& row : rows)
        r.rows.push_back(std::vector<QVariant>(row.begin(), row.end()));
    return wire::RowsetWriter::write(r);
}

} // namespace

// The organisation's lists as sign-in loads them.
class TestLoaders : public QObject {
    Q_OBJECT
    std::unique_ptr<TestHttpServer> server;
    BoxRecorder boxes;

private slots:
    void init() {
        server = std::make_unique<TestHttpServer>();
        Form<frmTLSettings>(); // its first load reads the stored settings over the live ones
        TLMain().Settings().SetWebAddress(server->baseUrl());
        TLMain().ActiveOrganization().OrganizationSys = 4;
        boxes.install();
    }

    void statusesInServerOrder() {
        server->setAnswer({200, "text/xml",
                           rowset({"StatusSys", "Status", "ColorCode"},
                                  {{8, "Out", "C00000"}, {3, "In", "00C000"}}),
                           0});
        LoadAvailableStatuses();
        QCOMPARE(server->requests().last().body,
                 QByteArray("strSQL=EXECUTE%20tl%5FGetAvailableStatuses%204%2C0%2C0"));
        QCOMPARE(modTLMain::colStatuses().Count(), 2L);
        QCOMPARE(modTLMain::colStatuses()[1]->StatusText, QStringLiteral("Out"));
        QCOMPARE(GetObjectFromCollection(modTLMain::colStatuses(), QStringLiteral("3"))->StatusText,
                 QStringLiteral("In"));
        QVERIFY(!GetObjectFromCollection(modTLMain::colStatuses(), QStringLiteral("6")));
        QVERIFY(boxes.isEmpty());
    }

    // A second status of the same number fails on its key and is reported; the first stays.
    void duplicateStatusIsReported() {
        server->setAnswer(
            {200, "text/xml", rowset({"StatusSys", "Status"}, {{3, "In"}, {3, "In again"}}), 0});
        LoadAvailableStatuses();
        QCOMPARE(modTLMain::colStatuses().Count(), 1L);
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].title, QStringLiteral("Anomaly Report ::LoadAvailableStatuses"));
    }

    void groupsByKey() {
        server->setAnswer({200, "text/xml", rowset({"GroupSys", "Name"}, {{12, "Sales"}}), 0});
        LoadAvailableGroups(QStringLiteral("P4"));
        QCOMPARE(server->requests().last().body,
                 QByteArray("strSQL=EXECUTE%20tl%5FGetOrganizationGroups%204"));
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
        QFETCH(int, setting);
        QFETCH(QString, selected);
        QFETCH(int, settingAfter);
        auto& combo = *Form<frmTLSettings>().cboLocation;
        server->setAnswer({200, "text/xml",
                           rowset({"LocationName", "OrganizationLocationSys"},
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

    void noAnswerEndsQuietly() {
        server->stop();
        auto& combo = *Form<frmTLSettings>().cboLocation;
        boxes.clear();
        TLMain().DataAccess().blnErrored = true; // the user was told already
        LoadAvailableLocations(&combo);
        QCOMPARE(combo.count(), 1);
        QVERIFY(boxes.isEmpty());
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestLoaders)
#include "tst_loaders.moc"
