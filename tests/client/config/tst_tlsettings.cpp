#include "FreshUserFolders.h"
#include "SettingsFixture.h"
#include "config/DeploymentDefaults.h"
#include "config/SettingValues.h"
#include "platform/CommandLine.h"
#include "platform/NetworkInterfaces.h"

#include <QApplication>
#include <QtTest>
#include <limits>

namespace {

InterfaceState wired(bool running) {
    return InterfaceState{
        QStringLiteral("eth0"), true, running, false, {QHostAddress(QStringLiteral("10.0.0.2"))}};
}

} // namespace

class TestTLSettings : public QObject {
    Q_OBJECT
    SettingsFixture fixture;
private slots:
    void init() { fixture.reset(); }
    void cleanup() {
        NetworkInterfaces::SetSource({});
        CommandLine::SetArguments(std::nullopt);
    }

    void emptyAddressAndHostGiveTheDeploymentsOwn() {
        TLSettings settings;
        QCOMPARE(settings.WebAddress(), DeploymentDefaults::WebAddress);
        QCOMPARE(settings.ChatServer(), DeploymentDefaults::ChatServer);
        settings.SetWebAddress(QStringLiteral("http://board.example:81"));
        settings.SetChatServer(QStringLiteral("chat.example"));
        QCOMPARE(settings.WebAddress(), QStringLiteral("http://board.example:81"));
        QCOMPARE(settings.ChatServer(), QStringLiteral("chat.example"));
        settings.SetWebAddress(QString());
        QCOMPARE(settings.WebAddress(), DeploymentDefaults::WebAddress);
    }

    void maxColumnsOfZeroReadsFive() {
        TLSettings settings;
        QCOMPARE(settings.MaxColumns(), 5);
        settings.SetMaxColumns(8);
        QCOMPARE(settings.MaxColumns(), 8);
        settings.SetMaxColumns(-2);
        QCOMPARE(settings.MaxColumns(), -2);
    }

    void iniFileNameIsInTheProgramsFolder() {
        QCOMPARE(QFileInfo(TLSettings().INIFileName()).absoluteFilePath(),
                 QDir(QCoreApplication::applicationDirPath())
                     .absoluteFilePath(QStringLiteral("tavlo.ini")));
    }

    void networkConnected_data() {
        QTest::addColumn<bool>("running");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("connected");
        QTest::newRow("network") << true << QStringList{} << true;
        QTest::newRow("no network") << false << QStringList{} << false;
        QTest::newRow("network, switch") << true << QStringList{"/IGNORENETWORK"} << false;
        QTest::newRow("no network, switch") << false << QStringList{"/ignorenetwork"} << false;
        QTest::newRow("network, other switch") << true << QStringList{"/debug"} << true;
    }
    void networkConnected() {
        QFETCH(bool, running);
        QFETCH(QStringList, arguments);
        QFETCH(bool, connected);
        NetworkInterfaces::SetSource([&] { return QList<InterfaceState>{wired(running)}; });
        CommandLine::SetArguments(arguments);
        QCOMPARE(TLSettings().NetworkConnected(), connected);
    }

    void networkConnectedFollowsEachReading() {
        bool running = true;
        NetworkInterfaces::SetSource([&] { return QList<InterfaceState>{wired(running)}; });
        const TLSettings settings;
        QVERIFY(settings.NetworkConnected());
        running = false;
        QVERIFY(!settings.NetworkConnected());
        running = true;
        QVERIFY(settings.NetworkConnected());
    }

    void wholeNumber_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("number");
        QTest::newRow("whole") << "7" << 7;
        QTest::newRow("blanks") << " 12 " << 12;
        QTest::newRow("0.6 up") << "0.6" << 1;
        QTest::newRow("0.5 to even") << "0.5" << 0;
        QTest::newRow("1.5 to even") << "1.5" << 2;
        QTest::newRow("2.5 to even") << "2.5" << 2;
        QTest::newRow("negative") << "-3" << -3;
        QTest::newRow("text") << "abc" << 0;
        QTest::newRow("leading number is not enough") << "12ab" << 0;
        QTest::newRow("empty") << "" << 0;
        QTest::newRow("too large") << "1e20" << std::numeric_limits<int>::max();
        QTest::newRow("too small") << "-1e20" << std::numeric_limits<int>::min();
        QTest::newRow("beyond a double") << "1e999" << 0;
    }
    void wholeNumber() {
        QFETCH(QString, text);
        QFETCH(int, number);
        QCOMPARE(SettingValues::WholeNumber(text), number);
    }

    void flag_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("fallback");
        QTest::addColumn<bool>("flag");
        QTest::newRow("True") << "True" << false << true;
        QTest::newRow("false any case") << "fALSE" << true << false;
        QTest::newRow("number") << "-1" << false << true;
        QTest::newRow("zero") << "0" << true << false;
        QTest::newRow("empty") << "" << false << false;
        QTest::newRow("other text") << "yes" << true << true;
    }
    void flag() {
        QFETCH(QString, text);
        QFETCH(bool, fallback);
        QFETCH(bool, flag);
        QCOMPARE(SettingValues::Flag(text, fallback), flag);
    }

    // A registry text ends at its first NUL; what isn't text reads as empty.
    void getRegistryValue() {
        SettingsFixture::store(QStringLiteral("Password"),
                               QStringLiteral("ab") + QChar(u'\0') + QStringLiteral("cd"));
        QCOMPARE(modTLRegistry::GetRegistryValue(RegistryRoot::CurrentUser,
                                                 modTLRegistry::kTavloKey,
                                                 QStringLiteral("Password")),
                 QStringLiteral("ab"));
        QSettings(QStringLiteral("Norvane"), QStringLiteral("Tavlo"))
            .setValue(QStringLiteral("UserName"), QStringList{"a", "b"});
        QCOMPARE(modTLRegistry::GetRegistryValue(RegistryRoot::CurrentUser,
                                                 modTLRegistry::kTavloKey,
                                                 QStringLiteral("UserName")),
                 QString());
        QCOMPARE(modTLRegistry::GetRegistryValue(RegistryRoot::CurrentUser,
                                                 QStringLiteral("Software\\Norvane\\None"),
                                                 QStringLiteral("X")),
                 QString());
    }

    void deleteRegistryValue_data() {
        QTest::addColumn<QString>("root");
        QTest::addColumn<bool>("deleted");
        QTest::newRow("signed handle")
            << modTLRegistry::RootText(RegistryRoot::CurrentUser) << true;
        QTest::newRow("unsigned handle") << "2147483649" << true;
        QTest::newRow("the machine's root")
            << modTLRegistry::RootText(RegistryRoot::LocalMachine) << false;
        QTest::newRow("unknown root") << "12" << false;
        QTest::newRow("no number") << "HKCU" << false;
    }
    void deleteRegistryValue() {
        QFETCH(QString, root);
        QFETCH(bool, deleted);
        SettingsFixture::store(QStringLiteral("UserName"), QStringLiteral("ann"));
        QCOMPARE(modTLRegistry::DeleteRegistryValue(modTLRegistry::kTavloKey,
                                                    QStringLiteral("UserName"), root),
                 deleted);
        QCOMPARE(SettingsFixture::stored(QStringLiteral("UserName")).has_value(), !deleted);
        QVERIFY(!modTLRegistry::DeleteRegistryValue(modTLRegistry::kTavloKey,
                                                    QStringLiteral("Nothing"), root));
    }

    void rootTextIsTheSignedHandle() {
        QCOMPARE(modTLRegistry::RootText(RegistryRoot::CurrentUser), QStringLiteral("-2147483647"));
        QCOMPARE(modTLRegistry::RootText(RegistryRoot::LocalMachine),
                 QStringLiteral("-2147483646"));
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestTLSettings)
#include "tst_tlsettings.moc"
