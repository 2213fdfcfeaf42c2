#include "FreshUserFolders.h"
#include "SettingsFixture.h"
#include "board/frmTLView.h"
#include "config/DeploymentDefaults.h"

#include <QApplication>
#include <QtTest>

namespace {

const QString kColumnsNumeric = QStringLiteral("The Max Columns must be a numeric value.");
const QString kColumnsRange = QStringLiteral("The Max Columns must be a value between 1 and 10.");
const QString kRefreshNumeric = QStringLiteral("The Refresh Interval must be a numeric value.");
const QString kRefreshRange = QStringLiteral("The Refresh Interval must be at least 30 seconds.");
const QString kIdleNumeric = QStringLiteral("The Idle Time must be a numeric value.");
const QString kIdleRange = QStringLiteral("The Idle time setting must be at least 1 minute.");
const QString kChatDisabled =
    QStringLiteral("Sorry, chat is currently disabled for your organization.");

} // namespace

class TestFrmTLSettings : public QObject {
    Q_OBJECT
    SettingsFixture fixture;

    // The dialog as the user meets it: loaded by its first touch and shown.
    static frmTLSettings& shown() {
        auto& form = Form<frmTLSettings>();
        form.show();
        return form;
    }
    static bool loaded() { return IsLoaded<frmTLSettings>(); }
    template <class T> static T* control(const char* name) {
        return Form<frmTLSettings>().findChild<T*>(QString::fromLatin1(name));
    }

private slots:
    void init() { fixture.reset(); }

    void captionsAndTabs() {
        auto& form = shown();
        QCOMPARE(form.objectName(), QStringLiteral("frmTLSettings"));
        QCOMPARE(form.windowTitle(), QStringLiteral("Tavlo Settings"));
        auto* tabs = control<QTabWidget>("vstOptions");
        QVERIFY(tabs);
        QCOMPARE(tabs->count(), 3);
        QCOMPARE(tabs->tabText(0), QStringLiteral("General"));
        QCOMPARE(tabs->tabText(1), QStringLiteral("Startup"));
        QCOMPARE(tabs->tabText(2), QStringLiteral("Views"));
    }

    void controlsByName_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("tab");
        const QString url = DeploymentDefaults::WebAddress, host = DeploymentDefaults::ChatServer;
        QTest::newRow("lblWebAddress") << "lblWebAddress"
                                       << "Enter Server Name or IP Address: (" + url + ")" << 0;
        QTest::newRow("lblChatServer")
            << "lblChatServer"
            << "Enter the Chat Server Name or IP Address: (" + host + ")" << 0;
        QTest::newRow("chkEnableChat")
            << "chkEnableChat"
            << "Enable chat (Requires application restart after change)" << 0;
        QTest::newRow("chkAutoDetectActivity") << "chkAutoDetectActivity"
                                               << "Auto-detect Status from KB/Mouse Activity" << 0;
        QTest::newRow("lblIdleTime") << "lblIdleTime"
                                     << "Set my status as Idle when I am inactive for" << 0;
        QTest::newRow("lblIdleMinutes") << "lblIdleMinutes"
                                        << "minutes" << 0;
        QTest::newRow("fmeExitButton") << "fmeExitButton"
                                       << "Exit Button Function" << 0;
        QTest::newRow("optExitMinimize") << "optExitMinimize"
                                         << "Minimize Tavlo to the System Tray" << 0;
        QTest::newRow("optExitShutdown") << "optExitShutdown"
                                         << "Shutdown Tavlo Application" << 0;
        QTest::newRow("fmeLogin") << "fmeLogin"
                                  << "Login/Startup Options" << 1;
        QTest::newRow("chkAutoLogin") << "chkAutoLogin"
                                      << "Automatically Login" << 1;
        QTest::newRow("lblUserName") << "lblUserName"
                                     << "UserName:" << 1;
        QTest::newRow("lblPassword") << "lblPassword"
                                     << "Password:" << 1;
        QTest::newRow("chkAutoStartApp") << "chkAutoStartApp"
                                         << "Auto Start Application on Startup" << 1;
        QTest::newRow("chkAutoStatusIn") << "chkAutoStatusIn"
                                         << "Set Status to In / Out When I Login / Logout" << 1;
        QTest::newRow("fmeViewConfig") << "fmeViewConfig"
                                       << "View Configurations" << 2;
        QTest::newRow("lblRefreshInterval") << "lblRefreshInterval"
                                            << "Refresh Interval (seconds): " << 2;
        QTest::newRow("cmdDefaultRefresh") << "cmdDefaultRefresh"
                                           << "Default" << 2;
        QTest::newRow("lblMaxColumns") << "lblMaxColumns"
                                       << "MiniView Columns:" << 2;
        QTest::newRow("cmdDefaultColumns") << "cmdDefaultColumns"
                                           << "Default" << 2;
        QTest::newRow("fmeDefaultView") << "fmeDefaultView"
                                        << "Default View" << 2;
        QTest::newRow("optStandardView") << "optStandardView"
                                         << "Standard View" << 2;
        QTest::newRow("optMiniView") << "optMiniView"
                                     << "Mini View" << 2;
        QTest::newRow("fmeLocations") << "fmeLocations"
                                      << "Locations" << 2;
        QTest::newRow("lblLocation") << "lblLocation"
                                     << "Location:" << 2;
        QTest::newRow("txtWebAddress") << "txtWebAddress" << url << 0;
        QTest::newRow("txtChatServer") << "txtChatServer" << host << 0;
        QTest::newRow("txtIdleTime") << "txtIdleTime"
                                     << "15" << 0;
        QTest::newRow("txtUserName") << "txtUserName"
                                     << "" << 1;
        QTest::newRow("txtPassword") << "txtPassword"
                                     << "" << 1;
        QTest::newRow("txtRefreshInterval") << "txtRefreshInterval"
                                            << "180" << 2;
        QTest::newRow("txtMaxColumns") << "txtMaxColumns"
                                       << "5" << 2;
        QTest::newRow("cboLocation") << "cboLocation"
                                     << "" << 2;
    }
    void controlsByName() {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(int, tab);
        auto* widget = Form<frmTLSettings>().findChild<QWidget*>(name);
        QVERIFY2(widget, qPrintable(name));
        auto* tabs = control<QTabWidget>("vstOptions");
        QVERIFY(tabs->widget(tab)->isAncestorOf(widget));
        QString shownText;
        if (auto* label = qobject_cast<QLabel*>(widget))
            shownText = label->text();
        else if (auto* button = qobject_cast<QAbstractButton*>(widget))
            shownText = button->text();
        else if (auto* frame = qobject_cast<QGroupBox*>(widget))
            shownText = frame->title();
        else if (auto* box = qobject_cast<QLineEdit*>(widget))
            shownText = box->text();
        else if (auto* combo = qobject_cast<QComboBox*>(widget))
            shownText = combo->currentText();
        QCOMPARE(shownText, text);
    }

    void okAndCancelOutsideTheTabs() {
        QVERIFY(control<QPushButton>("cmdOK"));
        QVERIFY(control<QPushButton>("cmdCancel"));
        QVERIFY(!control<QTabWidget>("vstOptions")->isAncestorOf(control<QPushButton>("cmdOK")));
    }

    void formProperties() {
        auto& form = Form<frmTLSettings>();
        form.SetExitShutdown(true);
        QVERIFY(form.optExitShutdown->isChecked() && !form.optExitMinimize->isChecked());
        QVERIFY(form.ExitShutdown());
        form.SetExitShutdown(false);
        QVERIFY(form.optExitMinimize->isChecked() && !form.ExitShutdown());
        form.optStandardView->setChecked(true);
        QCOMPARE(form.ViewChoice(), 1);
        form.optMiniView->setChecked(true);
        QCOMPARE(form.ViewChoice(), 2);
    }

    // The location list accepts no typing: even a key that would pick "<All>" is dropped.
    void typingInTheLocationListIsDiscarded() {
        auto& form = shown();
        form.cboLocation->setFocus();
        QTest::keyClicks(form.cboLocation, QStringLiteral("<All"));
        QTest::keyClick(form.cboLocation, Qt::Key_Backspace);
        QCOMPARE(form.cboLocation->currentIndex(), -1);
        form.cboLocation->addItem(QStringLiteral("Bergen"), 42);
        form.cboLocation->setCurrentIndex(1);
        QTest::keyClicks(form.cboLocation, QStringLiteral("<"));
        QCOMPARE(form.cboLocation->currentIndex(), 1);
    }

    void autoLoginEnablesTheCredentials_data() {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("stored off") << "0" << false;
        QTest::newRow("stored on") << "1" << true;
    }
    void autoLoginEnablesTheCredentials() {
        QFETCH(QString, stored);
        QFETCH(bool, enabled);
        SettingsFixture::store(QStringLiteral("AutoLogin"), stored);
        auto& form = shown();
        QCOMPARE(form.txtUserName->isEnabled(), enabled);
        QCOMPARE(form.txtPassword->isEnabled(), enabled);
        QTest::mouseClick(form.chkAutoLogin, Qt::LeftButton, {},
                          QPoint(4, form.chkAutoLogin->height() / 2));
        QCOMPARE(form.chkAutoLogin->isChecked(), !enabled);
        QCOMPARE(form.txtUserName->isEnabled(), !enabled);
        QCOMPARE(form.txtPassword->isEnabled(), !enabled);
    }

    void defaultButtonsFillInWithoutSaving() {
        auto& form = shown();
        form.txtMaxColumns->setText(QStringLiteral("9"));
        form.txtRefreshInterval->setText(QStringLiteral("600"));
        QTest::mouseClick(form.cmdDefaultColumns, Qt::LeftButton);
        QCOMPARE(form.txtMaxColumns->text(), QStringLiteral("5"));
        QCOMPARE(form.txtRefreshInterval->text(), QStringLiteral("600"));
        QTest::mouseClick(form.cmdDefaultRefresh, Qt::LeftButton);
        QCOMPARE(form.txtRefreshInterval->text(), QStringLiteral("180"));
        QVERIFY(!SettingsFixture::stored(QStringLiteral("MaxColumns")));
        QVERIFY(!SettingsFixture::stored(QStringLiteral("RefreshInterval")));
        QVERIFY(loaded());
    }

    void cancelLosesTheChanges() {
        SettingsFixture::store(QStringLiteral("UserName"), QStringLiteral("ann"));
        auto& form = shown();
        form.txtUserName->setText(QStringLiteral("bob"));
        form.chkEnableChat->setChecked(false);
        QTest::mouseClick(form.cmdCancel, Qt::LeftButton);
        QVERIFY(!loaded());
        QCOMPARE(SettingsFixture::stored(QStringLiteral("UserName")), QStringLiteral("ann"));
        QVERIFY(!SettingsFixture::stored(QStringLiteral("EnableChat")));
        QCOMPARE(shown().txtUserName->text(), QStringLiteral("ann"));
        QVERIFY(shown().chkEnableChat->isChecked());
    }

    void escapeIsCancel() {
        auto& form = shown();
        form.txtUserName->setText(QStringLiteral("bob"));
        QTest::keyClick(&form, Qt::Key_Escape);
        QVERIFY(!loaded());
        QVERIFY(!SettingsFixture::stored(QStringLiteral("UserName")));
    }

    void okValidatesInOrder_data() {
        QTest::addColumn<QString>("columns");
        QTest::addColumn<QString>("refresh");
        QTest::addColumn<QString>("idle");
        QTest::addColumn<QString>("message"); // empty: accepted
        QTest::newRow("columns 11") << "11"
                                    << "180"
                                    << "15" << kColumnsRange;
        QTest::newRow("columns 0") << "0"
                                   << "180"
                                   << "15" << kColumnsRange;
        QTest::newRow("columns 1") << "1"
                                   << "180"
                                   << "15"
                                   << "";
        QTest::newRow("columns 10") << "10"
                                    << "180"
                                    << "15"
                                    << "";
        QTest::newRow("columns 0.6 rounds to 1") << "0.6"
                                                 << "180"
                                                 << "15"
                                                 << "";
        QTest::newRow("columns 0.5 rounds to 0") << "0.5"
                                                 << "180"
                                                 << "15" << kColumnsRange;
        QTest::newRow("columns 10.5 rounds to 10") << "10.5"
                                                   << "180"
                                                   << "15"
                                                   << "";
        QTest::newRow("columns 10.6") << "10.6"
                                      << "180"
                                      << "15" << kColumnsRange;
        QTest::newRow("columns text") << "five"
                                      << "180"
                                      << "15" << kColumnsNumeric;
        QTest::newRow("columns empty") << ""
                                       << "180"
                                       << "15" << kColumnsNumeric;
        QTest::newRow("columns huge") << "1e20"
                                      << "180"
                                      << "15" << kColumnsRange;
        QTest::newRow("refresh 29") << "5"
                                    << "29"
                                    << "15" << kRefreshRange;
        QTest::newRow("refresh 30") << "5"
                                    << "30"
                                    << "15"
                                    << "";
        QTest::newRow("refresh text") << "5"
                                      << "soon"
                                      << "15" << kRefreshNumeric;
        QTest::newRow("idle 0") << "5"
                                << "180"
                                << "0" << kIdleRange;
        QTest::newRow("idle 1") << "5"
                                << "180"
                                << "1"
                                << "";
        QTest::newRow("idle text") << "5"
                                   << "180"
                                   << "never" << kIdleNumeric;
        QTest::newRow("all wrong: columns first") << "x"
                                                  << "y"
                                                  << "z" << kColumnsNumeric;
        QTest::newRow("refresh before idle") << "5"
                                             << "29"
                                             << "0" << kRefreshRange;
        QTest::newRow("numeric before range") << "5"
                                              << "30"
                                              << "0.4" << kIdleRange;
    }
    void okValidatesInOrder() {
        QFETCH(QString, columns);
        QFETCH(QString, refresh);
        QFETCH(QString, idle);
        QFETCH(QString, message);
        auto& form = shown();
        QVERIFY(form.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        form.txtMaxColumns->setText(columns);
        form.txtRefreshInterval->setText(refresh);
        form.txtIdleTime->setText(idle);
        QTest::mouseClick(form.cmdOK, Qt::LeftButton);
        if (message.isEmpty()) {
            QCOMPARE(fixture.boxes.size(), 0);
            QVERIFY(!loaded());
            QCOMPARE(SettingsFixture::stored(QStringLiteral("MaxColumns")), columns);
            QCOMPARE(SettingsFixture::stored(QStringLiteral("RefreshInterval")), refresh);
            QCOMPARE(SettingsFixture::stored(QStringLiteral("IdleTime")), idle);
            return;
        }
        QCOMPARE(fixture.boxes.size(), 1);
        QCOMPARE(fixture.boxes[0].text, message);
        QCOMPARE(fixture.boxes[0].icon(), int(vb::vbInformation));
        QCOMPARE(fixture.boxes[0].buttons(), int(vb::vbOKOnly));
        QCOMPARE(fixture.boxes[0].title, QStringLiteral("Tavlo"));
        QVERIFY(loaded());
        QVERIFY(form.isVisible());
        QVERIFY(!form.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY(!SettingsFixture::stored(QStringLiteral("MaxColumns")));
    }

    void okSavesAndUnloads() {
        auto& form = shown();
        form.txtUserName->setText(QStringLiteral("ann"));
        form.optStandardView->setChecked(true);
        QTest::mouseClick(form.cmdOK, Qt::LeftButton);
        QVERIFY(!loaded());
        QCOMPARE(SettingsFixture::stored(QStringLiteral("UserName")), QStringLiteral("ann"));
        QCOMPARE(SettingsFixture::stored(QStringLiteral("ViewChoice")), QStringLiteral("1"));
        QCOMPARE(SettingsFixture::live().ViewChoice, 1);
    }

    // The stored password is enciphered; OK enciphers only a text the user typed over it.
    void okEnciphersOnlyANewPassword_data() {
        QTest::addColumn<bool>("autoLogin");
        QTest::addColumn<QString>("typed"); // empty: left as loaded
        QTest::addColumn<QString>("saved");
        const QString old = SettingsFixture::encipher(QStringLiteral("old-pw"));
        QTest::newRow("auto login, unchanged") << true << "" << old;
        QTest::newRow("auto login, typed")
            << true << "new-pw" << SettingsFixture::encipher(QStringLiteral("new-pw"));
        QTest::newRow("no auto login, typed") << false << "new-pw"
                                              << "new-pw";
        QTest::newRow("no auto login, unchanged") << false << "" << old;
    }
    void okEnciphersOnlyANewPassword() {
        QFETCH(bool, autoLogin);
        QFETCH(QString, typed);
        QFETCH(QString, saved);
        SettingsFixture::store(QStringLiteral("Password"),
                               SettingsFixture::encipher(QStringLiteral("old-pw")));
        SettingsFixture::store(QStringLiteral("AutoLogin"), QStringLiteral("1"));
        auto& form = shown();
        if (!typed.isEmpty())
            form.txtPassword->setText(typed);
        form.chkAutoLogin->setChecked(autoLogin);
        QTest::mouseClick(form.cmdOK, Qt::LeftButton);
        QVERIFY(!loaded());
        QCOMPARE(SettingsFixture::stored(QStringLiteral("Password")), saved);
        QCOMPARE(SettingsFixture::encipher(QStringLiteral("old-pw")) == saved, typed.isEmpty());
    }

    void okWithChatDisabledForTheOrganization_data() {
        QTest::addColumn<bool>("disabled");
        QTest::addColumn<bool>("checked");
        QTest::addColumn<int>("messages");
        QTest::addColumn<QString>("stored");
        QTest::newRow("disabled, checked") << true << true << 1 << "0";
        QTest::newRow("disabled, unchecked") << true << false << 0 << "0";
        QTest::newRow("enabled, checked") << false << true << 0 << "1";
    }
    void okWithChatDisabledForTheOrganization() {
        QFETCH(bool, disabled);
        QFETCH(bool, checked);
        QFETCH(int, messages);
        QFETCH(QString, stored);
        TLMain().ActiveOrganization().ChatDisabled = disabled;
        auto& form = shown();
        form.chkEnableChat->setChecked(checked);
        QTest::mouseClick(form.cmdOK, Qt::LeftButton);
        QCOMPARE(fixture.boxes.size(), messages);
        if (messages) {
            QCOMPARE(fixture.boxes[0].text, kChatDisabled);
            QCOMPARE(fixture.boxes[0].icon(), int(vb::vbInformation));
        }
        QVERIFY(!loaded()); // the message doesn't stop the save
        QCOMPARE(SettingsFixture::stored(QStringLiteral("EnableChat")), stored);
    }

    void okRestartsTheBoardsRefreshCount() {
        Form<frmTLView>().lngRefreshTimerSeconds = 77;
        QTest::mouseClick(shown().cmdOK, Qt::LeftButton);
        QCOMPARE(Form<frmTLView>().lngRefreshTimerSeconds, 0);
    }

    void okDoesNotLoadTheBoard() {
        QTest::mouseClick(shown().cmdOK, Qt::LeftButton);
        QVERIFY(!IsLoaded<frmTLView>());
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestFrmTLSettings)
#include "tst_frmtlsettings.moc"
