#include "FreshUserFolders.h"
#include "Rows.h"
#include "SettingsFixture.h"
#include "board/frmTLView.h"
#include "config/DeploymentDefaults.h"
#include "config/SettingValues.h"
#include "platform/CommandLine.h"
#include "platform/NetworkInterfaces.h"

#include <QApplication>
#include <limits>

// The settings from the stored values up: the number and flag readings, the store's own quirks,
// load and save through the dialog's controls, and the dialog's buttons.
class TestSettings : public QObject {
    Q_OBJECT
    SettingsFixture fixture;

    static frmTLSettings& form() { return Form<frmTLSettings>(); }
    static frmTLSettings& shown() {
        form().show();
        return form();
    }
    static bool loaded() { return IsLoaded<frmTLSettings>(); }
    static std::optional<QString> stored(const char* name) {
        return SettingsFixture::stored(QString::fromLatin1(name));
    }
    static void store(const char* name, const QString& value) {
        SettingsFixture::store(QString::fromLatin1(name), value);
    }
    static void click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }

private slots:
    void init() { fixture.reset(); }
    void cleanup() {
        NetworkInterfaces::SetSource({});
        CommandLine::SetArguments(std::nullopt);
    }

    void wholeNumber_data() {
        columns<QString, int>("text", "number");
        row("whole", "7", 7);
        row("blanks", " 12 ", 12);
        row("0.6 up", "0.6", 1);
        row("0.5 to even", "0.5", 0);
        row("1.5 to even", "1.5", 2);
        row("2.5 to even", "2.5", 2);
        row("negative", "-3", -3);
        row("text", "abc", 0);
        row("leading number is not enough", "12ab", 0);
        row("empty", "", 0);
        row("too large", "1e20", std::numeric_limits<int>::max());
        row("too small", "-1e20", std::numeric_limits<int>::min());
        row("beyond a double", "1e999", 0);
    }
    void wholeNumber() {
        auto [text, number] = fetch<QString, int>("text", "number");
        QCOMPARE(SettingValues::WholeNumber(text), number);
    }

    void flag_data() {
        columns<QString, bool, bool>("text", "fallback", "flag");
        row("True", "True", false, true);
        row("false any case", "fALSE", true, false);
        row("number", "-1", false, true);
        row("zero", "0", true, false);
        row("empty", "", false, false);
        row("other text", "yes", true, true);
    }
    void flag() {
        auto [text, fallback, flag] = fetch<QString, bool, bool>("text", "fallback", "flag");
        QCOMPARE(SettingValues::Flag(text, fallback), flag);
    }

    // An empty address or host reads as the deployment's own; columns of 0 read as five.
    void defaults() {
        TLSettings settings;
        settings.SetWebAddress(QStringLiteral("http://board.example:81"));
        settings.SetMaxColumns(-2);
        QCOMPARE(settings.WebAddress(), QStringLiteral("http://board.example:81"));
        QCOMPARE(settings.MaxColumns(), -2);
        settings.SetWebAddress(QString());
        settings.SetChatServer(QString());
        settings.SetMaxColumns(0);
        QCOMPARE(settings.WebAddress(), DeploymentDefaults::WebAddress);
        QCOMPARE(settings.ChatServer(), DeploymentDefaults::ChatServer);
        QCOMPARE(settings.MaxColumns(), 5);
    }

    void networkConnected_data() {
        columns<bool, QStringList, bool>("running", "arguments", "connected");
        row("network", true, QStringList{}, true);
        row("no network", false, QStringList{}, false);
        row("network, switch", true, QStringList{"/IGNORENETWORK"}, false);
        row("no network, switch", false, QStringList{"/ignorenetwork"}, false);
        row("network, other switch", true, QStringList{"/debug"}, true);
    }
    // Read again at each asking, not once.
    void networkConnected() {
        auto [running, arguments, connected] =
            fetch<bool, QStringList, bool>("running", "arguments", "connected");
        NetworkInterfaces::SetSource([&] {
            return QList<InterfaceState>{InterfaceState{
                "eth0", true, running, false, {QHostAddress(QStringLiteral("10.0.0.2"))}}};
        });
        CommandLine::SetArguments(arguments);
        const TLSettings settings;
        QCOMPARE(settings.NetworkConnected(), connected);
        running = !running;
        QCOMPARE(settings.NetworkConnected(), !connected && arguments.isEmpty());
    }

    // A registry text ends at its first NUL.
    void getRegistryValue() {
        store("Password", QStringLiteral("ab") + QChar(u'\0') + QStringLiteral("cd"));
        QCOMPARE(modTLRegistry::GetRegistryValue(RegistryRoot::CurrentUser,
                                                 modTLRegistry::kTavloKey, "Password"),
                 QStringLiteral("ab"));
    }

    // The first load, with nothing stored, loads the hidden dialog (which reads the settings again,
    // lists the locations and stays on top) and gives the defaults.
    void firstRunWithNoKeyAtAll() {
        QFile::remove(QSettings(QStringLiteral("Norvane"), QStringLiteral("Tavlo")).fileName());
        modTLRegistry::LoadSettings();
        QCOMPARE(FormRegistry::instance().loadedNames(), QStringList{"frmtlsettings"});
        QVERIFY(!form().isVisible());
        QVERIFY(form().windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QCOMPARE(form().cboLocation->itemText(0), QStringLiteral("<All>"));
        QCOMPARE(form().cboLocation->currentIndex(), -1);
        const TLSettings& s = SettingsFixture::live();
        QVERIFY(s.EnableChat && s.AutoStatusIn && s.AutoDetectActivity);
        QVERIFY(!s.AutoLogin && !s.AutoStartApp && !s.ExitShutdown);
        QCOMPARE(QList<int>({s.ViewChoice, s.RefreshInterval, s.IdleTime, s.MaxColumns(),
                             s.OrganizationLocationSys()}),
                 QList<int>({2, 180, 15, 5, 0}));
        QVERIFY(fixture.boxes.isEmpty());
    }

    void storedFlagsAndChoices_data() {
        columns<QString, QString, bool>("name", "stored", "on");
        row("AutoLogin empty", "AutoLogin", "", false);
        row("EnableChat 0", "EnableChat", "0", false);
        row("EnableChat empty", "EnableChat", "", true);
        row("AutoDetectActivity 0", "AutoDetectActivity", "0", false);
        row("AutoDetectActivity text", "AutoDetectActivity", "x", false);
        row("ExitShutdown True", "ExitShutdown", "True", true);
        row("ExitShutdown text", "ExitShutdown", "maybe", false);
        row("ViewChoice 1", "ViewChoice", "1", true);
        row("ViewChoice 2", "ViewChoice", "2", false);
        row("ViewChoice text", "ViewChoice", "standard", false);
    }
    void storedFlagsAndChoices() {
        auto [name, stored, on] = fetch<QString, QString, bool>("name", "stored", "on");
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

    // A number that isn't one counts as absent (a value that isn't text is the store's rule).
    void aNumberThatIsNoneCountsAsAbsent() {
        store("RefreshInterval", QStringLiteral("12ab"));
        modTLRegistry::LoadSettings();
        QCOMPARE(form().txtRefreshInterval->text(), QStringLiteral("180"));
        QCOMPARE(SettingsFixture::live().RefreshInterval, 180);
    }

    // Stored enciphered; in memory plain after a load, but enciphered after a save.
    void passwordIsPlainAfterLoadAndEncipheredAfterSave() {
        store("Password", QStringLiteral("'<rwgew"));
        modTLRegistry::LoadSettings();
        QCOMPARE(form().txtPassword->text(), QStringLiteral("'<rwgew"));
        QCOMPARE(SettingsFixture::live().Password, QStringLiteral("s3cret!"));
        modTLRegistry::SaveSettings();
        QCOMPARE(SettingsFixture::live().Password, QStringLiteral("'<rwgew"));
        QCOMPARE(stored("Password"), QStringLiteral("'<rwgew"));
    }

    // Every control's text is stored and made live, except chat, which waits for a restart; what is
    // saved loads back the same.
    void saveWritesTheTextsOfTheControls_data() {
        columns<bool>("on");
        row("all on", true);
        row("all off", false);
    }
    void saveWritesTheTextsOfTheControls() {
        QFETCH(bool, on);
        modTLRegistry::LoadSettings();
        for (QCheckBox* box : {form().chkAutoLogin, form().chkEnableChat, form().chkAutoStartApp,
                               form().chkAutoStatusIn, form().chkAutoDetectActivity})
            box->setChecked(on);
        form().SetExitShutdown(on);
        QCOMPARE(form().ExitShutdown(), on);
        QCOMPARE(form().optExitMinimize->isChecked(), !on);
        (on ? form().optStandardView : form().optMiniView)->setChecked(true);
        QCOMPARE(form().ViewChoice(), on ? 1 : 2);
        form().txtWebAddress->setText(QStringLiteral("http://board.example"));
        form().txtChatServer->setText(QStringLiteral("chat.example"));
        form().txtUserName->setText(QStringLiteral("ann"));
        form().txtPassword->setText(QStringLiteral("$x"));
        form().txtMaxColumns->setText(QStringLiteral("0.6"));
        form().txtRefreshInterval->setText(QStringLiteral("300"));
        form().txtIdleTime->setText(QStringLiteral("20"));
        modTLRegistry::SaveSettings();

        QStringList saved; // every stored value, by name
        for (const QString& key :
             QSettings(QStringLiteral("Norvane"), QStringLiteral("Tavlo")).allKeys())
            saved << key + '=' + SettingsFixture::stored(key).value_or(QStringLiteral("?"));
        saved.sort();
        QCOMPARE(
            saved.join(' '),
            QStringLiteral("AutoDetectActivity=%1 AutoLogin=%1 AutoStartApp=%1 AutoStatusIn=%1 "
                           "ChatServer=chat.example EnableChat=%1 ExitShutdown=%2 IdleTime=20 "
                           "MaxColumns=0.6 Password=$x RefreshInterval=300 UserName=ann "
                           "ViewChoice=%3 WebAddress=http://board.example")
                .arg(on ? "1" : "0", on ? "True" : "False", on ? "1" : "2"));
        QCOMPARE(AutoStart::IsPresent(), on);

        const TLSettings& s = SettingsFixture::live();
        QCOMPARE(s.WebAddress(), QStringLiteral("http://board.example"));
        QCOMPARE(QList<bool>({s.AutoLogin, s.AutoStartApp, s.ExitShutdown}), QList<bool>(3, on));
        QCOMPARE(QList<int>({s.ViewChoice, s.MaxColumns(), s.RefreshInterval, s.IdleTime}),
                 QList<int>({on ? 1 : 2, 1, 300, 20}));
        QCOMPARE(s.UserName, QStringLiteral("ann"));
        QCOMPARE(s.Password, QStringLiteral("$x"));
        QVERIFY(s.EnableChat); // until a restart
        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        SettingsFixture::live() = TLSettings();
        modTLRegistry::LoadSettings();
        QCOMPARE(SettingsFixture::live().EnableChat, on);
    }

    // A stored location goes straight to the settings; it is saved only when one is selected.
    void locationIsSavedOnlyWhenOneIsSelected() {
        store("OrganizationLocationSys", QStringLiteral("7"));
        modTLRegistry::LoadSettings();
        QCOMPARE(form().cboLocation->currentIndex(), -1);
        modTLRegistry::SaveSettings();
        QCOMPARE(stored("OrganizationLocationSys"), QStringLiteral("7"));
        QCOMPARE(SettingsFixture::live().OrganizationLocationSys(), 7);
        form().cboLocation->addItem(QStringLiteral("Bergen"), 42);
        form().cboLocation->setCurrentIndex(1);
        modTLRegistry::SaveSettings();
        QCOMPARE(stored("OrganizationLocationSys"), QStringLiteral("42"));
        QCOMPARE(SettingsFixture::live().OrganizationLocationSys(), 42);
        form().cboLocation->setCurrentIndex(0);
        modTLRegistry::SaveSettings();
        QCOMPARE(stored("OrganizationLocationSys"), QStringLiteral("0"));
    }

    // Turning auto-start off removes the entry; with none there, nothing happens or is said.
    void autoStartFollowsTheCheckBoxQuietly() {
        modTLRegistry::LoadSettings();
        form().chkAutoStartApp->setChecked(true);
        modTLRegistry::SaveSettings();
        QVERIFY(AutoStart::IsPresent());
        form().chkAutoStartApp->setChecked(false);
        modTLRegistry::SaveSettings();
        modTLRegistry::SaveSettings();
        QVERIFY(!AutoStart::IsPresent());
        QCOMPARE(stored("AutoStartApp"), QStringLiteral("0"));
        QVERIFY(fixture.boxes.isEmpty());
    }

    // The location list accepts no typing: even a key that would pick "<All>" is dropped.
    void typingInTheLocationListIsDiscarded() {
        auto& dialog = shown();
        dialog.cboLocation->setFocus();
        QTest::keyClicks(dialog.cboLocation, QStringLiteral("<All"));
        QTest::keyClick(dialog.cboLocation, Qt::Key_Backspace);
        QCOMPARE(dialog.cboLocation->currentIndex(), -1);
        dialog.cboLocation->addItem(QStringLiteral("Bergen"), 42);
        dialog.cboLocation->setCurrentIndex(1);
        QTest::keyClicks(dialog.cboLocation, QStringLiteral("<"));
        QCOMPARE(dialog.cboLocation->currentIndex(), 1);
    }

    void autoLoginEnablesTheCredentials_data() {
        columns<QString, bool>("stored", "enabled");
        row("stored off", "0", false);
        row("stored on", "1", true);
    }
    void autoLoginEnablesTheCredentials() {
        auto [stored, enabled] = fetch<QString, bool>("stored", "enabled");
        store("AutoLogin", stored);
        auto& dialog = shown();
        QCOMPARE(dialog.txtUserName->isEnabled(), enabled);
        QCOMPARE(dialog.txtPassword->isEnabled(), enabled);
        QTest::mouseClick(dialog.chkAutoLogin, Qt::LeftButton, {},
                          QPoint(4, dialog.chkAutoLogin->height() / 2));
        QCOMPARE(dialog.chkAutoLogin->isChecked(), !enabled);
        QCOMPARE(dialog.txtUserName->isEnabled(), !enabled);
        QCOMPARE(dialog.txtPassword->isEnabled(), !enabled);
    }

    void defaultButtonsFillInWithoutSaving() {
        auto& dialog = shown();
        dialog.txtMaxColumns->setText(QStringLiteral("9"));
        dialog.txtRefreshInterval->setText(QStringLiteral("600"));
        click(dialog.cmdDefaultColumns);
        QCOMPARE(dialog.txtMaxColumns->text(), QStringLiteral("5"));
        QCOMPARE(dialog.txtRefreshInterval->text(), QStringLiteral("600"));
        click(dialog.cmdDefaultRefresh);
        QCOMPARE(dialog.txtRefreshInterval->text(), QStringLiteral("180"));
        QVERIFY(!stored("MaxColumns") && !stored("RefreshInterval"));
        QVERIFY(loaded());
    }

    void cancelAndEscapeLoseTheChanges_data() {
        columns<bool>("escape");
        row("Cancel", false);
        row("Escape", true);
    }
    void cancelAndEscapeLoseTheChanges() {
        QFETCH(bool, escape);
        store("UserName", QStringLiteral("ann"));
        auto& dialog = shown();
        dialog.txtUserName->setText(QStringLiteral("bob"));
        dialog.chkEnableChat->setChecked(false);
        if (escape)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            click(dialog.cmdCancel);
        QVERIFY(!loaded());
        QCOMPARE(stored("UserName"), QStringLiteral("ann"));
        QVERIFY(!stored("EnableChat"));
        QCOMPARE(shown().txtUserName->text(), QStringLiteral("ann"));
        QVERIFY(shown().chkEnableChat->isChecked());
    }

    void okValidatesInOrder_data() {
        const char* columnsRange = "The Max Columns must be a value between 1 and 10.";
        const char* columnsNumeric = "The Max Columns must be a numeric value.";
        const char* refreshRange = "The Refresh Interval must be at least 30 seconds.";
        const char* idleRange = "The Idle time setting must be at least 1 minute.";
        columns<QString, QString, QString, QString>("columns", "refresh", "idle", "message");
        row("columns 11", "11", "180", "15", columnsRange);
        row("columns 0", "0", "180", "15", columnsRange);
        row("columns 10", "10", "180", "15", "");
        row("columns 0.5 rounds to 0", "0.5", "180", "15", columnsRange);
        row("columns 10.5 rounds to 10", "10.5", "180", "15", "");
        row("columns 10.6", "10.6", "180", "15", columnsRange);
        row("columns text", "five", "180", "15", columnsNumeric);
        row("refresh 29", "5", "29", "15", refreshRange);
        row("refresh 30", "5", "30", "15", "");
        row("refresh text", "5", "soon", "15", "The Refresh Interval must be a numeric value.");
        row("idle 0", "5", "180", "0", idleRange);
        row("idle text", "5", "180", "never", "The Idle Time must be a numeric value.");
        row("all wrong: columns first", "x", "y", "z", columnsNumeric);
        row("refresh before idle", "5", "29", "0", refreshRange);
        row("numeric before range", "5", "30", "0.4", idleRange);
    }
    // A refused value is said once and keeps the dialog open, no longer on top; an accepted set is
    // saved and the dialog unloaded.
    void okValidatesInOrder() {
        auto [columns, refresh, idle, message] =
            fetch<QString, QString, QString, QString>("columns", "refresh", "idle", "message");
        auto& dialog = shown();
        QVERIFY(dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        dialog.txtMaxColumns->setText(columns);
        dialog.txtRefreshInterval->setText(refresh);
        dialog.txtIdleTime->setText(idle);
        click(dialog.cmdOK);
        if (message.isEmpty()) {
            QCOMPARE(fixture.boxes.size(), 0);
            QVERIFY(!loaded());
            QCOMPARE(stored("MaxColumns"), columns);
            QCOMPARE(stored("RefreshInterval"), refresh);
            QCOMPARE(stored("IdleTime"), idle);
            return;
        }
        QCOMPARE(fixture.boxes.texts(), QStringList{message});
        QCOMPARE(fixture.boxes[0].icon(), int(vb::vbInformation));
        QCOMPARE(fixture.boxes[0].buttons(), int(vb::vbOKOnly));
        QCOMPARE(fixture.boxes[0].title, QStringLiteral("Tavlo"));
        QVERIFY(loaded() && dialog.isVisible());
        QVERIFY(!dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY(!stored("MaxColumns"));
    }

    // OK saves, makes the view live, restarts the board's refresh count without loading the board
    // when it isn't, and enciphers only a password typed over the stored one.
    void okEnciphersOnlyANewPassword_data() {
        columns<bool, QString, QString>("autoLogin", "typed", "saved");
        row("auto login, unchanged", true, "", ";cu(rf");
        row("auto login, typed", true, "new-pw", ":jf(rf");
        row("no auto login, typed", false, "new-pw", "new-pw");
        row("no auto login, unchanged", false, "", ";cu(rf");
    }
    void okEnciphersOnlyANewPassword() {
        auto [autoLogin, typed, saved] =
            fetch<bool, QString, QString>("autoLogin", "typed", "saved");
        store("Password", QStringLiteral(";cu(rf"));
        store("AutoLogin", QStringLiteral("1"));
        auto& dialog = shown();
        if (!typed.isEmpty())
            dialog.txtPassword->setText(typed);
        dialog.chkAutoLogin->setChecked(autoLogin);
        dialog.optStandardView->setChecked(true);
        click(dialog.cmdOK);
        QVERIFY(!loaded());
        QVERIFY(!IsLoaded<frmTLView>());
        QCOMPARE(stored("Password"), saved);
        QCOMPARE(stored("ViewChoice"), QStringLiteral("1"));
        QCOMPARE(SettingsFixture::live().ViewChoice, 1);
        Form<frmTLView>().lngRefreshTimerSeconds = 77;
        click(shown().cmdOK);
        QCOMPARE(Form<frmTLView>().lngRefreshTimerSeconds, 0);
    }

    void okWithChatDisabledForTheOrganization_data() {
        columns<bool, bool, int, QString>("disabled", "checked", "messages", "stored");
        row("disabled, checked", true, true, 1, "0");
        row("disabled, unchecked", true, false, 0, "0");
        row("enabled, checked", false, true, 0, "1");
    }
    void okWithChatDisabledForTheOrganization() {
        auto [disabled, checked, messages, stored] =
            fetch<bool, bool, int, QString>("disabled", "checked", "messages", "stored");
        TLMain().ActiveOrganization().ChatDisabled = disabled;
        auto& dialog = shown();
        dialog.chkEnableChat->setChecked(checked);
        click(dialog.cmdOK);
        QCOMPARE(fixture.boxes.size(), messages);
        if (messages) {
            QCOMPARE(fixture.boxes[0].text,
                     QStringLiteral("Sorry, chat is currently disabled for your organization."));
            QCOMPARE(fixture.boxes[0].icon(), int(vb::vbInformation));
        }
        QVERIFY(!loaded()); // the message doesn't stop the save
        QCOMPARE(this->stored("EnableChat"), stored);
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestSettings)
#include "tst_settings.moc"
