#include "FreshUserFolders.h"
#include "SettingsFixture.h"
#include "config/DeploymentDefaults.h"

#include <QApplication>
#include <QtTest>

class TestLoadSaveSettings : public QObject {
    Q_OBJECT
    SettingsFixture fixture;

    static frmTLSettings& form() { return Form<frmTLSettings>(); }

private slots:
    void init() { fixture.reset(); }

    void firstRunWithNoKeyAtAll() {
        QVERIFY(!QFile::exists(
            QSettings(QStringLiteral("Norvane"), QStringLiteral("Tavlo")).fileName()));
        modTLRegistry::LoadSettings();
        QCOMPARE(FormRegistry::instance().loadedNames(),
                 QStringList{QStringLiteral("frmtlsettings")});
        QVERIFY(!form().isVisible());
        QVERIFY(form().chkEnableChat->isChecked());
        QVERIFY(form().chkAutoStatusIn->isChecked());
        QVERIFY(form().chkAutoDetectActivity->isChecked());
        QVERIFY(!form().chkAutoLogin->isChecked());
        QVERIFY(!form().chkAutoStartApp->isChecked());
        QVERIFY(form().optMiniView->isChecked());
        QVERIFY(form().optExitMinimize->isChecked());
        QCOMPARE(form().txtWebAddress->text(), DeploymentDefaults::WebAddress);
        QCOMPARE(form().txtChatServer->text(), DeploymentDefaults::ChatServer);

        const TLSettings& s = SettingsFixture::live();
        QVERIFY(s.EnableChat && s.AutoStatusIn && s.AutoDetectActivity);
        QVERIFY(!s.AutoLogin && !s.AutoStartApp && !s.ExitShutdown);
        QCOMPARE(s.ViewChoice, 2);
        QCOMPARE(s.RefreshInterval, 180);
        QCOMPARE(s.IdleTime, 15);
        QCOMPARE(s.MaxColumns(), 5);
        QCOMPARE(s.OrganizationLocationSys(), 0);
        QCOMPARE(s.UserName, QString());
        QCOMPARE(s.Password, QString());
        QCOMPARE(s.WebAddress(), DeploymentDefaults::WebAddress);
        QVERIFY(fixture.boxes.isEmpty());
    }

    // The first load of the settings loads the dialog, whose own load reads them again, lists
    // the locations and puts the dialog on top.
    void theFirstLoadLoadsTheDialog() {
        SettingsFixture::store(QStringLiteral("UserName"), QStringLiteral("ann"));
        modTLRegistry::LoadSettings();
        QCOMPARE(form().txtUserName->text(), QStringLiteral("ann"));
        QCOMPARE(form().cboLocation->count(), 1);
        QCOMPARE(form().cboLocation->itemText(0), QStringLiteral("<All>"));
        QCOMPARE(form().cboLocation->itemData(0).toInt(), 0);
        QCOMPARE(form().cboLocation->currentIndex(), -1);
        QVERIFY(form().windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    }

    void unusableNumbersFallBack_data() {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("columns");
        QTest::addColumn<QString>("refresh");
        QTest::addColumn<QString>("idle");
        QTest::addColumn<int>("storedNumber"); // what a usable stored text counts as
        QTest::newRow("text") << "abc"
                              << "5"
                              << "180"
                              << "15" << 0;
        QTest::newRow("empty") << ""
                               << "5"
                               << "180"
                               << "15" << 0;
        QTest::newRow("leading digits") << "12ab"
                                        << "5"
                                        << "180"
                                        << "15" << 0;
        QTest::newRow("usable number") << "42"
                                       << "42"
                                       << "42"
                                       << "42" << 42;
        QTest::newRow("fraction, rounded to even") << "2.5"
                                                   << "2.5"
                                                   << "2.5"
                                                   << "2.5" << 2;
    }
    void unusableNumbersFallBack() {
        QFETCH(QString, stored);
        QFETCH(QString, columns);
        QFETCH(QString, refresh);
        QFETCH(QString, idle);
        QFETCH(int, storedNumber);
        for (const char* name : {"MaxColumns", "RefreshInterval", "IdleTime"})
            SettingsFixture::store(QString::fromLatin1(name), stored);
        modTLRegistry::LoadSettings();
        QCOMPARE(form().txtMaxColumns->text(), columns);
        QCOMPARE(form().txtRefreshInterval->text(), refresh);
        QCOMPARE(form().txtIdleTime->text(), idle);
        const TLSettings& s = SettingsFixture::live();
        QCOMPARE(s.MaxColumns(), storedNumber ? storedNumber : 5);
        QCOMPARE(s.RefreshInterval, storedNumber ? storedNumber : 180);
        QCOMPARE(s.IdleTime, storedNumber ? storedNumber : 15);
    }

    void storedFlagsAndChoices_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("on");
        QTest::newRow("AutoLogin 1") << "AutoLogin"
                                     << "1" << true;
        QTest::newRow("AutoLogin empty") << "AutoLogin"
                                         << "" << false;
        QTest::newRow("AutoStartApp 1") << "AutoStartApp"
                                        << "1" << true;
        QTest::newRow("EnableChat 0") << "EnableChat"
                                      << "0" << false;
        QTest::newRow("EnableChat empty") << "EnableChat"
                                          << "" << true;
        QTest::newRow("AutoStatusIn 0") << "AutoStatusIn"
                                        << "0" << false;
        QTest::newRow("AutoDetectActivity 0") << "AutoDetectActivity"
                                              << "0" << false;
        QTest::newRow("AutoDetectActivity text") << "AutoDetectActivity"
                                                 << "x" << false;
        QTest::newRow("ExitShutdown True") << "ExitShutdown"
                                           << "True" << true;
        QTest::newRow("ExitShutdown False") << "ExitShutdown"
                                            << "False" << false;
        QTest::newRow("ExitShutdown text") << "ExitShutdown"
                                           << "maybe" << false;
        QTest::newRow("ViewChoice 1") << "ViewChoice"
                                      << "1" << true;
        QTest::newRow("ViewChoice 0") << "ViewChoice"
                                      << "0" << false;
        QTest::newRow("ViewChoice 2") << "ViewChoice"
                                      << "2" << false;
        QTest::newRow("ViewChoice text") << "ViewChoice"
                                         << "standard" << false;
    }
    void storedFlagsAndChoices() {
        QFETCH(QString, name);
        QFETCH(QString, stored);
        QFETCH(bool, on);
        SettingsFixture::store(name, stored);
        modTLRegistry::LoadSettings();
        const TLSettings& s = SettingsFixture::live();
        const QMap<QString, std::pair<bool, bool>> seen{
            {"AutoLogin", {form().chkAutoLogin->isChecked(), s.AutoLogin}},
            {"AutoStartApp", {form().chkAutoStartApp->isChecked(), s.AutoStartApp}},
            {"EnableChat", {form().chkEnableChat->isChecked(), s.EnableChat}},
            {"AutoStatusIn", {form().chkAutoStatusIn->isChecked(), s.AutoStatusIn}},
            {"AutoDetectActivity",
             {form().chkAutoDetectActivity->isChecked(), s.AutoDetectActivity}},
            {"ExitShutdown", {form().optExitShutdown->isChecked(), s.ExitShutdown}},
            {"ViewChoice", {form().optStandardView->isChecked(), s.ViewChoice == 1}},
        };
        QCOMPARE(seen[name].first, on);
        QCOMPARE(seen[name].second, on);
    }

    // A stored value that isn't text counts as absent, whatever the setting.
    void nonTextValuesCountAsAbsent() {
        QSettings stored(QStringLiteral("Norvane"), QStringLiteral("Tavlo"));
        for (const char* name :
             {"WebAddress", "EnableChat", "MaxColumns", "ViewChoice", "UserName"})
            stored.setValue(QString::fromLatin1(name), QStringList{"1", "2"});
        stored.setValue(QStringLiteral("AutoLogin"), QByteArray("1"));
        stored.sync();
        modTLRegistry::LoadSettings();
        QCOMPARE(form().txtWebAddress->text(), DeploymentDefaults::WebAddress);
        QVERIFY(form().chkEnableChat->isChecked());
        QVERIFY(!form().chkAutoLogin->isChecked());
        QCOMPARE(form().txtMaxColumns->text(), QStringLiteral("5"));
        QVERIFY(form().optMiniView->isChecked());
        QCOMPARE(form().txtUserName->text(), QString());
    }

    void locationGoesStraightToTheSettings() {
        SettingsFixture::store(QStringLiteral("OrganizationLocationSys"), QStringLiteral("12"));
        modTLRegistry::LoadSettings();
        QCOMPARE(SettingsFixture::live().OrganizationLocationSys(), 12);
        QCOMPARE(form().cboLocation->currentIndex(), -1);
    }

    // Stored enciphered; in memory plain after a load, but enciphered after a save.
    void passwordIsPlainAfterLoadAndEncipheredAfterSave() {
        const QString enciphered = SettingsFixture::encipher(QStringLiteral("s3cret!"));
        SettingsFixture::store(QStringLiteral("Password"), enciphered);
        modTLRegistry::LoadSettings();
        QCOMPARE(form().txtPassword->text(), enciphered);
        QCOMPARE(SettingsFixture::live().Password, QStringLiteral("s3cret!"));
        modTLRegistry::SaveSettings();
        QCOMPARE(SettingsFixture::live().Password, enciphered);
        QCOMPARE(SettingsFixture::stored(QStringLiteral("Password")), enciphered);
    }

    void saveWritesTheTextsOfTheControls_data() {
        QTest::addColumn<bool>("on");
        QTest::newRow("all on") << true;
        QTest::newRow("all off") << false;
    }
    void saveWritesTheTextsOfTheControls() {
        QFETCH(bool, on);
        modTLRegistry::LoadSettings();
        for (QCheckBox* box : {form().chkAutoLogin, form().chkEnableChat, form().chkAutoStartApp,
                               form().chkAutoStatusIn, form().chkAutoDetectActivity})
            box->setChecked(on);
        form().SetExitShutdown(on);
        (on ? form().optStandardView : form().optMiniView)->setChecked(true);
        form().txtWebAddress->setText(QStringLiteral("http://board.example"));
        form().txtChatServer->setText(QStringLiteral("chat.example"));
        form().txtUserName->setText(QStringLiteral("ann"));
        form().txtPassword->setText(QStringLiteral("as typed"));
        form().txtMaxColumns->setText(QStringLiteral("0.6"));
        form().txtRefreshInterval->setText(QStringLiteral("300"));
        form().txtIdleTime->setText(QStringLiteral("20"));
        modTLRegistry::SaveSettings();

        const QString bit = on ? QStringLiteral("1") : QStringLiteral("0");
        const QMap<QString, QString> expected{{"WebAddress", "http://board.example"},
                                              {"ChatServer", "chat.example"},
                                              {"AutoLogin", bit},
                                              {"EnableChat", bit},
                                              {"AutoStartApp", bit},
                                              {"AutoStatusIn", bit},
                                              {"AutoDetectActivity", bit},
                                              {"UserName", "ann"},
                                              {"Password", "as typed"},
                                              {"MaxColumns", "0.6"},
                                              {"ExitShutdown", on ? "True" : "False"},
                                              {"RefreshInterval", "300"},
                                              {"IdleTime", "20"},
                                              {"ViewChoice", on ? "1" : "2"}};
        for (auto it = expected.begin(); it != expected.end(); ++it)
            QCOMPARE(SettingsFixture::stored(it.key()), std::optional<QString>(it.value()));
        QCOMPARE(QSettings(QStringLiteral("Norvane"), QStringLiteral("Tavlo")).allKeys().size(),
                 expected.size());

        const TLSettings& s = SettingsFixture::live();
        QCOMPARE(s.WebAddress(), QStringLiteral("http://board.example"));
        QCOMPARE(s.AutoLogin, on);
        QCOMPARE(s.AutoStartApp, on);
        QCOMPARE(s.ExitShutdown, on);
        QCOMPARE(s.ViewChoice, on ? 1 : 2);
        QCOMPARE(s.MaxColumns(), 1);
        QCOMPARE(s.RefreshInterval, 300);
        QCOMPARE(s.IdleTime, 20);
        QCOMPARE(AutoStart::IsPresent(), on);
    }

    // A change of chat works only after a restart: the save stores it but leaves it live as it was.
    void enableChatIsStoredButNotMadeLive() {
        modTLRegistry::LoadSettings();
        QVERIFY(SettingsFixture::live().EnableChat);
        form().chkEnableChat->setChecked(false);
        modTLRegistry::SaveSettings();
        QCOMPARE(SettingsFixture::stored(QStringLiteral("EnableChat")), QStringLiteral("0"));
        QVERIFY(SettingsFixture::live().EnableChat);
    }

    void locationIsSavedOnlyWhenOneIsSelected() {
        SettingsFixture::store(QStringLiteral("OrganizationLocationSys"), QStringLiteral("7"));
        modTLRegistry::LoadSettings();
        modTLRegistry::SaveSettings();
        QCOMPARE(SettingsFixture::stored(QStringLiteral("OrganizationLocationSys")),
                 QStringLiteral("7"));
        QCOMPARE(SettingsFixture::live().OrganizationLocationSys(), 7);

        form().cboLocation->addItem(QStringLiteral("Bergen"), 42);
        form().cboLocation->setCurrentIndex(1);
        modTLRegistry::SaveSettings();
        QCOMPARE(SettingsFixture::stored(QStringLiteral("OrganizationLocationSys")),
                 QStringLiteral("42"));
        QCOMPARE(SettingsFixture::live().OrganizationLocationSys(), 42);

        form().cboLocation->setCurrentIndex(0);
        modTLRegistry::SaveSettings();
        QCOMPARE(SettingsFixture::stored(QStringLiteral("OrganizationLocationSys")),
                 QStringLiteral("0"));
    }

    // Turning auto-start off removes the entry; with none there, nothing happens and nothing is
    // said.
    void autoStartFollowsTheCheckBoxQuietly() {
        modTLRegistry::LoadSettings();
        form().chkAutoStartApp->setChecked(true);
        modTLRegistry::SaveSettings();
        QVERIFY(AutoStart::IsPresent());
        form().chkAutoStartApp->setChecked(false);
        modTLRegistry::SaveSettings();
        QVERIFY(!AutoStart::IsPresent());
        modTLRegistry::SaveSettings();
        QVERIFY(!AutoStart::IsPresent());
        QCOMPARE(SettingsFixture::stored(QStringLiteral("AutoStartApp")), QStringLiteral("0"));
        QVERIFY(fixture.boxes.isEmpty());
    }

    void savedSettingsLoadBackTheSame() {
        modTLRegistry::LoadSettings();
        form().txtUserName->setText(QStringLiteral("bob"));
        form().txtPassword->setText(SettingsFixture::encipher(QStringLiteral("pw")));
        form().txtRefreshInterval->setText(QStringLiteral("240"));
        form().optStandardView->setChecked(true);
        form().SetExitShutdown(true);
        modTLRegistry::SaveSettings();
        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        SettingsFixture::live() = TLSettings();

        modTLRegistry::LoadSettings();
        QCOMPARE(form().txtUserName->text(), QStringLiteral("bob"));
        QVERIFY(form().optStandardView->isChecked());
        QVERIFY(form().ExitShutdown());
        const TLSettings& s = SettingsFixture::live();
        QCOMPARE(s.UserName, QStringLiteral("bob"));
        QCOMPARE(s.Password, QStringLiteral("pw"));
        QCOMPARE(s.RefreshInterval, 240);
        QCOMPARE(s.ViewChoice, 1);
        QVERIFY(s.ExitShutdown);
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestLoadSaveSettings)
#include "tst_loadsavesettings.moc"
