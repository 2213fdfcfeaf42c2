#include "shell/TLMain.h"
#include "shell/modTLMain.h"

#include <QApplication>
#include <QtTest>

// The root object and the shared lists.
class TestTLMain : public QObject {
    Q_OBJECT

private slots:
    // Every object member exists at its first read, keeps its state between reads, and can be
    // replaced by someone else's object.
    void membersAreMadeAtFirstReadAndReplaceable() {
        TLMainObject root;
        QVERIFY(!root.ActiveUserMade());
        QVERIFY(!root.SelectedContactMade());
        root.SelectedContact().FirstName = QStringLiteral("Ann");
        QVERIFY(root.SelectedContactMade());
        QCOMPARE(root.SelectedContact().FirstName, QStringLiteral("Ann"));
        QVERIFY(!root.ActiveContactMade()); // its twin stays unmade

        auto replacement = std::make_unique<TLContact>();
        replacement->FirstName = QStringLiteral("Bo");
        TLContact* raw = replacement.get();
        root.SetSelectedContact(std::move(replacement));
        QCOMPARE(&root.SelectedContact(), raw);
        QCOMPARE(root.SelectedContact().FirstName, QStringLiteral("Bo"));

        root.SetSelectedContact(nullptr); // released: the next read makes a fresh one
        QCOMPARE(root.SelectedContact().FirstName, QString());
    }

    void theGlobalRootIsOneObject() {
        TLMain().ActiveOrganization().OrganizationName = QStringLiteral("Acme");
        QCOMPARE(&TLMain(), &TLMain());
        QCOMPARE(TLMain().ActiveOrganization().OrganizationName, QStringLiteral("Acme"));
    }

    // Destroy releases everything but the organisations and the transfer state.
    void destroyKeepsOrganizationsAndTransfer() {
        TLMainObject root;
        root.Settings().UserName = QStringLiteral("ann");
        root.ActiveUser();
        root.ActiveStatusRow().Comment = QStringLiteral("lunch");
        root.ActiveOrganization().OrganizationName = QStringLiteral("Acme");
        root.SelectedOrganization().OrganizationName = QStringLiteral("Other");
        root.FTP().strFTPSite = QStringLiteral("ftp.example");
        root.Functions();
        root.Destroy();
        QVERIFY(!root.SettingsMade());
        QVERIFY(!root.ActiveUserMade());
        QVERIFY(!root.ActiveStatusRowMade());
        QVERIFY(!root.FunctionsMade());
        QCOMPARE(root.ActiveOrganization().OrganizationName, QStringLiteral("Acme"));
        QCOMPARE(root.SelectedOrganization().OrganizationName, QStringLiteral("Other"));
        QCOMPARE(root.FTP().strFTPSite, QStringLiteral("ftp.example"));
        QCOMPARE(root.Settings().UserName, QString());
    }

    void versionTextNamesTheProgram() {
        const QString text = TLMain().VersionCheck();
        QVERIFY2(QRegularExpression(QStringLiteral("^tst_tlmain v\\d+\\.\\d+\\.\\d+$"))
                     .match(text)
                     .hasMatch(),
                 qPrintable(text));
        QVERIFY(!TLMain().ComputerName().isEmpty());
        QVERIFY(!TLMain().IPAddress().isEmpty());
    }

    // A board row makes its person, user record and status at their first read.
    void statusRowMembersAreMadeOnFirstUse() {
        TLStatusRow row;
        row.Contact().ContactSys = 7;
        row.Status().StatusSys = 3;
        QCOMPARE(row.Contact().ContactSys, 7);
        QCOMPARE(row.Status().StatusSys, 3);
        QCOMPARE(row.User().UserSys(), 0);
    }

    void clearingTheListsEmptiesThem() {
        auto& contacts = modTLMain::colContacts();
        for (int key : {12, 5, 40})
            contacts.Add(std::make_shared<TLStatusRow>(), QString::number(key));
        modTLMain::ClearContacts();
        QCOMPARE(contacts.Count(), 0L);
        contacts.Add(std::make_shared<TLStatusRow>(), QStringLiteral("12")); // key free again
        QCOMPARE(contacts.Count(), 1L);
        modTLMain::ClearContacts();

        modTLMain::colStatuses().Add(std::make_shared<TLStatus>(), QStringLiteral("3"));
        modTLMain::colGroups().Add(std::make_shared<TLGroup>(), QStringLiteral("KEY1"));
        modTLMain::ClearStatuses();
        modTLMain::ClearGroups();
        QCOMPARE(modTLMain::colStatuses().Count(), 0L);
        QCOMPARE(modTLMain::colGroups().Count(), 0L);
        modTLMain::ClearGroups(); // an empty list clears without complaint
    }
};

QTEST_MAIN(TestTLMain)
#include "tst_tlmain.moc"
