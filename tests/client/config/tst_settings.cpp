#include "BoxRecorder.h"
#include "FreshUserFolders.h"
#include "Rows.h"
#include "base/Forms.h"
#include "board/frmTLView.h"
#include "config/SettingValues.h"
#include "config/TLSettings.h"
#include "config/frmTLSettings.h"
#include "config/modTLRegistry.h"
#include "platform/AutoStart.h"
#include "platform/CommandLine.h"
#include "platform/NetworkInterfaces.h"
#include "platform/SettingsStore.h"
#include "shell/TLMain.h"

#include <QApplication>
#include <QSettings>
#include <limits>

// The settings from the stored values up: the number and flag readings, load and save between
// the store, the dialog's controls and the live settings, and the dialog's buttons.
class TestSettings : public QObject {
    Q_OBJECT
    BoxRecorder boxes;

    static frmTLSettings& form() { return Form<frmTLSettings>(); }
    static frmTLSettings& shown() {
        form().show();
        return form();
    }
    static bool loaded() { return IsLoaded<frmTLSettings>(); }
    static TLSettings& live() { return TLMain().Settings(); }
    static void store(const QString& name, const QString& value) {
        SettingsStore::WriteText(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey, name, value);
    }
    static std::optional<QString> stored(const QString& name) {
        return SettingsStore::ReadText(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey, name);
    }
    static void click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }

    // Every stored value as name=text, by name.
    static QString storedTexts() {
        QStringList texts;
        for (const QString& name :
             QSettings(QStringLiteral("Norvane"), QStringLiteral("Tavlo")).allKeys())
            texts << name + '=' + stored(name).value_or(QStringLiteral("?"));
        texts.sort();
        return texts.join(' ');
    }
    // The live settings in the same form, flags as 0 or 1.
    static QString liveTexts() {
        const TLSettings& s = live();
        const auto n = [](int value) { return QString::number(value); };
        return QStringLiteral(
                   "AutoDetectActivity=%1 AutoLogin=%2 AutoStartApp=%3 AutoStatusIn=%4 "
                   "ChatServer=%5 EnableChat=%6 ExitShutdown=%7 IdleTime=%8 MaxColumns=%9 "
                   "OrganizationLocationSys=%10 Password=%11 RefreshInterval=%12 "
                   "UserName=%13 ViewChoice=%14 WebAddress=%15")
            .arg(n(s.AutoDetectActivity), n(s.AutoLogin), n(s.AutoStartApp), n(s.AutoStatusIn),
                 s.ChatServer(), n(s.EnableChat), n(s.ExitShutdown), n(s.IdleTime),
                 n(s.MaxColumns()), n(s.OrganizationLocationSys()), s.Password,
                 n(s.RefreshInterval), s.UserName, n(s.ViewChoice), s.WebAddress());
    }

private slots:
    // No stored settings, no auto-start entry, no dialog loaded, fresh live settings.
    void init() {
        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QSettings(QStringLiteral("Norvane"), QStringLiteral("Tavlo")).clear();
        AutoStart::Remove();
        live() = TLSettings();
        TLMain().ActiveOrganization().ChatDisabled = false;
        boxes.install();
    }
    void cleanup() {
        NetworkInterfaces::SetSource({});
        CommandLine::SetArguments(std::nullopt);
    }

    void readings_data() {
        columns<QString, int, int>("text", "number", "flag"); // a flag of -1: the fallback
        row("whole", "7", 7, 1);
        row("blanks", " 12 ", 12, 1);
        row("0.6 up", "0.6", 1, 1);
        row("0.5 to even, yet no zero", "0.5", 0, 1);
        row("1.5 to even", "1.5", 2, 1);
        row("minus one", "-1", -1, 1);
        row("zero", "0", 0, 0);
        row("leading number is not enough", "12ab", 0, -1);
        row("empty", "", 0, -1);
        row("too large", "1e20", std::numeric_limits<int>::max(), 1);
        row("too small", "-1e20", std::numeric_limits<int>::min(), 1);
        row("beyond a double", "1e999", 0, -1);
        row("True any case", "tRUE", 0, 1);
        row("False any case, blanks", " fALSE ", 0, 0);
    }
    // A stored text as a whole number and as a flag.
    void readings() {
        auto [text, number, flag] = fetch<QString, int, int>("text", "number", "flag");
        QCOMPARE(SettingValues::WholeNumber(text), number);
        QCOMPARE(SettingValues::Flag(text, false), flag == 1);
        QCOMPARE(SettingValues::Flag(text, true), flag != 0);
    }

    // Asked afresh at each reading; the switch forces it off.
    void networkConnected() {
        bool running = true;
        NetworkInterfaces::SetSource([&] {
            return QList<InterfaceState>{InterfaceState{
                "eth0", true, running, false, {QHostAddress(QStringLiteral("10.0.0.2"))}}};
        });
        const TLSettings settings;
        QVERIFY(settings.NetworkConnected());
        running = false;
        QVERIFY(!settings.NetworkConnected());
        running = true;
        CommandLine::SetArguments(QStringList{"/IGNORENETWORK"});
        QVERIFY(!settings.NetworkConnected());
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
        QCOMPARE(liveTexts(),
                 QStringLiteral("AutoDetectActivity=1 AutoLogin=0 AutoStartApp=0 AutoStatusIn=1 "
                                "ChatServer=localhost EnableChat=1 ExitShutdown=0 IdleTime=15 "
                                "MaxColumns=5 OrganizationLocationSys=0 Password= "
                                "RefreshInterval=180 UserName= ViewChoice=2 "
                                "WebAddress=http://localhost:8080"));
        QVERIFY(boxes.isEmpty());
    }

    void loadAndSaveBack_data() {
        columns<QString, QString, QString, QString>("name", "stored", "live", "saved");
        row("flag on at any number", "AutoStartApp", "-2.5", "1", "1");
        row("flag off at a text", "AutoDetectActivity", "yes", "0", "0");
        row("exit flag in any case", "ExitShutdown", "tRUE", "1", "True");
        row("standard view", "ViewChoice", "1", "1", "1");
        row("mini view at a text", "ViewChoice", "standard", "2", "2");
        row("number", "RefreshInterval", "300", "300", "300");
        row("number rounded, kept as stored", "MaxColumns", "0.6", "1", "0.6");
        row("not a number", "IdleTime", "12ab", "15", "15");
        row("address", "WebAddress", "http://board.example:81", "http://board.example:81",
            "http://board.example:81");
        row("chat host", "ChatServer", "chat.example", "chat.example", "chat.example");
        row("password deciphered", "Password", "'<rwgew", "s3cret!", "'<rwgew");
        row("text up to its first NUL", "UserName", QStringLiteral("ann\0bob"), "ann", "ann");
        row("location kept while none is selected", "OrganizationLocationSys", "7", "7", "7");
    }
    // A stored text reaches the live settings through the controls, and a save writes it back.
    void loadAndSaveBack() {
        auto [name, text, value, saved] =
            fetch<QString, QString, QString, QString>("name", "stored", "live", "saved");
        store(name, text);
        modTLRegistry::LoadSettings();
        QVERIFY2(liveTexts().split(' ').contains(name + '=' + value), qPrintable(liveTexts()));
        modTLRegistry::SaveSettings();
        QCOMPARE(stored(name), saved);
    }

    // A save stores the controls' texts (each checked above as it loads and saves back) and makes
    // them live, except chat, which waits for a restart; auto-start follows its box, and a
    // selected location is stored.
    void saveStoresAndMakesLiveTheControls() {
        modTLRegistry::LoadSettings();
        auto& f = form();
        f.cboLocation->addItem(QStringLiteral("Bergen"), 42);
        const auto save = [&](bool on, const QStringList& texts) {
            for (QCheckBox* box : {f.chkAutoLogin, f.chkEnableChat, f.chkAutoStartApp,
                                   f.chkAutoStatusIn, f.chkAutoDetectActivity})
                box->setChecked(on);
            f.SetExitShutdown(on);
            (on ? f.optStandardView : f.optMiniView)->setChecked(true);
            f.cboLocation->setCurrentIndex(on ? 1 : 0);
            const QList<QLineEdit*> lines{f.txtWebAddress, f.txtChatServer, f.txtUserName,
                                          f.txtPassword,   f.txtMaxColumns, f.txtRefreshInterval,
                                          f.txtIdleTime};
            for (qsizetype i = 0; i < lines.size(); ++i)
                lines[i]->setText(texts[i]);
            modTLRegistry::SaveSettings();
        };
        save(true, {"http://board.example", "chat.example", "ann", "$x", "-2.4", "300", "20"});
        QVERIFY(AutoStart::IsPresent());
        QCOMPARE(stored("OrganizationLocationSys"), QStringLiteral("42"));
        QCOMPARE(liveTexts(),
                 QStringLiteral("AutoDetectActivity=1 AutoLogin=1 AutoStartApp=1 AutoStatusIn=1 "
                                "ChatServer=chat.example EnableChat=1 ExitShutdown=1 IdleTime=20 "
                                "MaxColumns=-2 OrganizationLocationSys=42 Password=$x "
                                "RefreshInterval=300 UserName=ann ViewChoice=1 "
                                "WebAddress=http://board.example"));

        // Empty texts and no columns read as the defaults.
        save(false, {"", "", "", "", "0", "30", "1"});
        QVERIFY(!AutoStart::IsPresent());
        QCOMPARE(storedTexts(),
                 QStringLiteral("AutoDetectActivity=0 AutoLogin=0 AutoStartApp=0 AutoStatusIn=0 "
                                "ChatServer= EnableChat=0 ExitShutdown=False IdleTime=1 "
                                "MaxColumns=0 OrganizationLocationSys=0 Password= "
                                "RefreshInterval=30 UserName= ViewChoice=2 WebAddress="));
        QCOMPARE(liveTexts(),
                 QStringLiteral("AutoDetectActivity=0 AutoLogin=0 AutoStartApp=0 AutoStatusIn=0 "
                                "ChatServer=localhost EnableChat=1 ExitShutdown=0 IdleTime=1 "
                                "MaxColumns=5 OrganizationLocationSys=0 Password= "
                                "RefreshInterval=30 UserName= ViewChoice=2 "
                                "WebAddress=http://localhost:8080"));
        QVERIFY(boxes.isEmpty());

        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        modTLRegistry::LoadSettings();
        QVERIFY(!live().EnableChat);
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

    // Without auto login the credentials are disabled. The default buttons only fill in their
    // controls. Cancel and Escape unload the dialog without saving; it shows what is stored when
    // it comes back.
    void cancelAndEscapeLoseTheChanges() {
        store("UserName", QStringLiteral("ann"));
        auto& dialog = shown();
        QVERIFY(!dialog.txtUserName->isEnabled() && !dialog.txtPassword->isEnabled());
        dialog.txtMaxColumns->setText(QStringLiteral("9"));
        dialog.txtRefreshInterval->setText(QStringLiteral("600"));
        click(dialog.cmdDefaultColumns);
        QCOMPARE(dialog.txtMaxColumns->text(), QStringLiteral("5"));
        QCOMPARE(dialog.txtRefreshInterval->text(), QStringLiteral("600"));
        click(dialog.cmdDefaultRefresh);
        QCOMPARE(dialog.txtRefreshInterval->text(), QStringLiteral("180"));
        QVERIFY(loaded());
        for (const bool escape : {false, true}) {
            shown().txtUserName->setText(QStringLiteral("bob"));
            form().chkEnableChat->setChecked(false);
            if (escape)
                QTest::keyClick(&form(), Qt::Key_Escape);
            else
                click(form().cmdCancel);
            QVERIFY(!loaded());
            QCOMPARE(storedTexts(), QStringLiteral("UserName=ann"));
            QCOMPARE(shown().txtUserName->text(), QStringLiteral("ann"));
            QVERIFY(form().chkEnableChat->isChecked());
        }
    }

    void okValidatesInOrder_data() {
        const char* columnsRange = "The Max Columns must be a value between 1 and 10.";
        const char* columnsNumeric = "The Max Columns must be a numeric value.";
        const char* refreshRange = "The Refresh Interval must be at least 30 seconds.";
        const char* idleRange = "The Idle time setting must be at least 1 minute.";
        columns<QString, QString, QString, QString>("columns", "refresh", "idle", "message");
        row("lowest accepted", "1", "30", "1", "");
        row("columns 10.5 rounds to 10", "10.5", "180", "15", "");
        row("columns 11", "11", "180", "15", columnsRange);
        row("columns 0", "0", "180", "15", columnsRange);
        row("refresh text", "5", "soon", "15", "The Refresh Interval must be a numeric value.");
        row("idle 0.4 rounds to 0", "5", "180", "0.4", idleRange);
        row("idle text", "5", "180", "never", "The Idle Time must be a numeric value.");
        row("all wrong: columns first", "x", "y", "z", columnsNumeric);
        row("refresh before idle", "5", "29", "0", refreshRange);
    }
    // A refused value is said once and keeps the dialog open, no longer on top; an accepted set is
    // saved and the dialog unloaded.
    void okValidatesInOrder() {
        auto [columns, refresh, idle, message] =
            fetch<QString, QString, QString, QString>("columns", "refresh", "idle", "message");
        auto& dialog = shown();
        dialog.txtMaxColumns->setText(columns);
        dialog.txtRefreshInterval->setText(refresh);
        dialog.txtIdleTime->setText(idle);
        click(dialog.cmdOK);
        if (message.isEmpty()) {
            QCOMPARE(boxes.size(), 0);
            QVERIFY(!loaded());
            QCOMPARE(stored("MaxColumns"), columns);
            QCOMPARE(stored("RefreshInterval"), refresh);
            QCOMPARE(stored("IdleTime"), idle);
            return;
        }
        QCOMPARE(boxes.texts(), QStringList{message});
        QCOMPARE(boxes[0].icon(), int(vb::vbInformation));
        QVERIFY(loaded() && dialog.isVisible());
        QVERIFY(!dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY(!stored("MaxColumns"));
    }

    // Auto login enables the credentials. OK saves, makes the view live, restarts the board's
    // refresh count without loading the board when it isn't, and enciphers only a password typed
    // over the stored one.
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
        QCOMPARE(QList<bool>({dialog.txtUserName->isEnabled(), dialog.txtPassword->isEnabled()}),
                 QList<bool>(2, autoLogin));
        dialog.optStandardView->setChecked(true);
        click(dialog.cmdOK);
        QVERIFY(!loaded());
        QVERIFY(!IsLoaded<frmTLView>());
        QCOMPARE(stored("Password"), saved);
        QCOMPARE(stored("ViewChoice"), QStringLiteral("1"));
        QCOMPARE(live().ViewChoice, 1);
        Form<frmTLView>().lngRefreshTimerSeconds = 77;
        click(shown().cmdOK);
        QCOMPARE(Form<frmTLView>().lngRefreshTimerSeconds, 0);
    }

    void okWithChatDisabledForTheOrganization_data() {
        columns<bool, bool, QStringList, QString>("disabled", "checked", "said", "stored");
        const QStringList sorry{"Sorry, chat is currently disabled for your organization."};
        row("disabled, checked", true, true, sorry, "0");
        row("disabled, unchecked", true, false, QStringList{}, "0");
        row("enabled, checked", false, true, QStringList{}, "1");
    }
    // The message doesn't stop the save.
    void okWithChatDisabledForTheOrganization() {
        auto [disabled, checked, said, saved] =
            fetch<bool, bool, QStringList, QString>("disabled", "checked", "said", "stored");
        TLMain().ActiveOrganization().ChatDisabled = disabled;
        auto& dialog = shown();
        dialog.chkEnableChat->setChecked(checked);
        click(dialog.cmdOK);
        QCOMPARE(boxes.texts(), said);
        QVERIFY(!loaded());
        QCOMPARE(stored("EnableChat"), saved);
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestSettings)
#include "tst_settings.moc"
