#include "FreshUserFolders.h"
#include "Rows.h"
#include "platform/AutoStart.h"
#include "platform/CommandLine.h"
#include "platform/Desktop.h"
#include "platform/HostInfo.h"
#include "platform/NetworkState.h"
#include "platform/SettingsStore.h"
#include "platform/SingleInstance.h"
#include <QCoreApplication>
#include <QLocalSocket>
#include <QProcess>
#include <QSettings>
#include <QSize>
#include <QStandardPaths>
#include <QtTest>
#include <memory>

namespace {

using List = QList<InterfaceState>;

InterfaceState nic(const QString& name, bool up, bool running, bool loopback,
                   const QStringList& addresses) {
    InterfaceState state{name, up, running, loopback, {}};
    for (const auto& address : addresses)
        state.addresses << QHostAddress(address);
    return state;
}

const InterfaceState kLoopback = nic("lo", true, true, true, {"127.0.0.1", "::1"});
const InterfaceState kWired = nic("eth0", true, true, false, {"fe80::1", "192.168.1.20"});
const InterfaceState kUnplugged = nic("eth1", true, false, false, {"10.0.0.5"});
const InterfaceState kDown = nic("wlan0", false, false, false, {"10.1.0.7"});
const InterfaceState kNoAddress = nic("eth2", true, true, false, {});
const InterfaceState kIpv6Only = nic("eth3", true, true, false, {"2001:db8::5"});

const QString kKey = QStringLiteral("Software\\Norvane\\Tavlo");

QString programFile() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Norvane/Tavlo.conf");
}

void clearProgramSettings() {
    QSettings settings(QStringLiteral("Norvane"), QStringLiteral("Tavlo"));
    settings.clear();
    settings.sync();
}

bool write(const QString& key, const char* name, const QString& value) {
    return SettingsStore::WriteText(RegistryRoot::CurrentUser, key, QString::fromLatin1(name),
                                    value);
}
std::optional<QString> read(const QString& key, const char* name) {
    return SettingsStore::ReadText(RegistryRoot::CurrentUser, key, QString::fromLatin1(name));
}

QString everyByte() {
    QString text;
    for (int code = 1; code < 256; ++code)
        text += QChar(code);
    return text;
}

// The program an Exec line runs: the line's string escapes undone, then its first argument
// unquoted, as a session manager reads it.
QString programOfExecLine(const QString& value) {
    QString unescaped;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] == u'\\' && i + 1 < value.size()) {
            const QChar next = value[++i];
            unescaped += next == u'n'   ? QChar(u'\n')
                         : next == u't' ? QChar(u'\t')
                         : next == u'r' ? QChar(u'\r')
                         : next == u's' ? QChar(u' ')
                                        : next;
        } else {
            unescaped += value[i];
        }
    }
    QString program;
    if (!unescaped.startsWith(u'"'))
        return unescaped.section(u' ', 0, 0).replace(QStringLiteral("%%"), QStringLiteral("%"));
    for (qsizetype i = 1; i < unescaped.size() && unescaped[i] != u'"'; ++i) {
        if (unescaped[i] == u'\\' && i + 1 < unescaped.size())
            ++i;
        program += unescaped[i];
    }
    return program.replace(QStringLiteral("%%"), QStringLiteral("%"));
}

QString entryValue(const QString& path, const QString& name) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    for (const QByteArray& line : file.readAll().split('\n'))
        if (line.startsWith(name.toUtf8() + '='))
            return QString::fromUtf8(line.mid(name.size() + 1));
    return QString();
}

void expectValidEntry(const QString& path) {
    QProcess validate;
    validate.start(QStringLiteral("desktop-file-validate"), {path});
    QVERIFY(validate.waitForFinished(30000));
    QVERIFY2(validate.exitCode() == 0, validate.readAllStandardOutput().constData());
    QCOMPARE(validate.readAllStandardOutput(), QByteArray());
}

QString expectedLocation() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/tavlo.desktop");
}

const char* kProbe = "TAVLO_INSTANCE_PROBE";

// Runs this test program again as another instance of the same executable, in the given role.
std::unique_ptr<QProcess> startInstance(const QString& role) {
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QString::fromLatin1(kProbe), role);
    process->setProcessEnvironment(env);
    process->start(QCoreApplication::applicationFilePath(), {});
    return process;
}

// The roles of the other instance: "second" tries to start, finds the first, and asks it to
// raise its window; "hold" starts as the first and stays until killed.
int runInstanceProbe(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    SingleInstance instance;
    const QByteArray role = qgetenv(kProbe);
    if (role == "second") {
        if (instance.Claim())
            return 10;
        return instance.AskFirstToRaise(QStringLiteral("Tavlo")) ? 0 : 11;
    }
    if (!instance.Claim())
        return 12;
    fputs("claimed\n", stdout);
    fflush(stdout);
    return app.exec();
}

} // namespace

// The program's view of the machine: the network, the command line, the desktop, the stored
// settings, the auto-start entry and the one instance a user.
class TestPlatform : public QObject {
    Q_OBJECT
private slots:
    void init() { clearProgramSettings(); }
    void cleanup() {
        NetworkInterfaces::SetSource({});
        CommandLine::SetArguments(std::nullopt);
        Desktop::SetOpener({});
        QFile::remove(expectedLocation());
    }

    void isNetworkAlive_data() {
        columns<List, bool>("interfaces", "alive");
        row("no interfaces", List{}, false);
        row("loopback only", List{kLoopback}, false);
        row("cable out", List{kLoopback, kUnplugged}, false);
        row("interface down", List{kLoopback, kDown}, false);
        row("running without address", List{kLoopback, kNoAddress}, false);
        row("wired", List{kLoopback, kWired}, true);
        row("IPv6 only", List{kIpv6Only}, true);
        row("one of several", List{kDown, kUnplugged, kWired}, true);
        row("loopback flag missing, loopback address",
            List{nic("lo", true, true, false, {"127.0.0.1"})}, false);
    }
    void isNetworkAlive() {
        auto [interfaces, alive] = fetch<List, bool>("interfaces", "alive");
        NetworkInterfaces::SetSource([&] { return interfaces; });
        QCOMPARE(NetworkState::IsNetworkAlive(), alive);
    }

    // Each reading asks the machine again, so a lost connection shows at the next reading.
    void eachReadingAsksAgain() {
        int asked = 0;
        List now{kWired};
        NetworkInterfaces::SetSource([&] {
            ++asked;
            return now;
        });
        QVERIFY(NetworkState::IsNetworkAlive());
        now = {kUnplugged};
        QVERIFY(!NetworkState::IsNetworkAlive());
        QCOMPARE(asked, 2);
    }

    void localIP_data() {
        columns<List, QString>("interfaces", "ip");
        row("nothing", List{}, "127.0.0.1");
        row("loopback only", List{kLoopback}, "127.0.0.1");
        row("skips IPv6 and down interfaces", List{kLoopback, kDown, kIpv6Only, kWired},
            "192.168.1.20");
        row("unplugged still has its address", List{kUnplugged, kWired}, "10.0.0.5");
    }
    void localIP() {
        auto [interfaces, ip] = fetch<List, QString>("interfaces", "ip");
        NetworkInterfaces::SetSource([&] { return interfaces; });
        QCOMPARE(HostInfo::LocalIP(), ip);
    }

    void commandLine_data() {
        columns<QStringList, QString, bool>("arguments", "text", "ignoreNetwork");
        row("none", QStringList{}, "", false);
        row("the switch", QStringList{"/ignorenetwork"}, "/ignorenetwork", true);
        row("any case", QStringList{"/IgnoreNetwork"}, "/ignorenetwork", true);
        row("inside another word", QStringList{"-x/IGNORENETWORKS"}, "-x/ignorenetworks", true);
        row("among others", QStringList{"a", "/ignorenetwork", "B"}, "a /ignorenetwork b", true);
        row("without the slash", QStringList{"ignorenetwork"}, "ignorenetwork", false);
        row("split over arguments", QStringList{"/ignore", "network"}, "/ignore network", false);
    }
    void commandLine() {
        auto [arguments, text, ignoreNetwork] =
            fetch<QStringList, QString, bool>("arguments", "text", "ignoreNetwork");
        CommandLine::SetArguments(arguments);
        QCOMPARE(CommandLine::Text(), text);
        QCOMPARE(CommandLine::HasIgnoreNetwork(), ignoreNetwork);
    }

    void desktopOpensOnlyUsableUrls() {
        QList<QUrl> opened;
        Desktop::SetOpener([&](const QUrl& url) {
            opened << url;
            return true;
        });
        QVERIFY(
            Desktop::OpenUrl(QUrl(QStringLiteral("http://localhost:8080/Administrator.asp?x=1"))));
        QVERIFY(!Desktop::OpenUrl(QUrl()));
        QCOMPARE(opened,
                 QList<QUrl>{QUrl(QStringLiteral("http://localhost:8080/Administrator.asp?x=1"))});
    }

    void textRoundTrips_data() {
        columns<QString>("value");
        row("empty", QString());
        row("url", QStringLiteral("http://localhost:8080"));
        row("comma, read back as one text", QStringLiteral("a, b, c"));
        row("blanks around", QStringLiteral("  padded  "));
        row("leading at sign", QStringLiteral("@Variant(abc)"));
        row("ini punctuation", QStringLiteral("k=v;[x]#y\"q\"\\z"));
        row("control characters", QStringLiteral("\x01\x02\t\r\n\x1f"));
        row("every single byte", everyByte());
        row("beyond one byte", QStringLiteral(u"\u03a9\u043c\u0438\u0440"));
    }
    void textRoundTrips() {
        QFETCH(QString, value);
        QVERIFY(write(kKey, "Password", value));
        QCOMPARE(read(kKey, "Password"), std::optional<QString>(value));
    }

    // The program's key is the INI file Norvane/Tavlo.conf, each value a top-level key.
    void programKeyIsTheProgramsIniFile() {
        QVERIFY(write(kKey, "MaxColumns", QStringLiteral("7")));
        QVERIFY(QFile::exists(programFile()));
        QSettings file(programFile(), QSettings::IniFormat);
        QCOMPARE(file.value(QStringLiteral("MaxColumns")).toString(), QStringLiteral("7"));
        QCOMPARE(file.childGroups(), QStringList());
    }

    void deeperKeysAreGroupsAndOtherProgramsOtherFiles() {
        const QString deeper = kKey + QStringLiteral("\\Windows\\Board");
        const QString other = QStringLiteral("Software\\Someone\\Else");
        QVERIFY(write(deeper, "Left", QStringLiteral("10")));
        QVERIFY(write(other, "Left", QStringLiteral("20")));
        QCOMPARE(read(kKey, "Left"), std::nullopt);
        QCOMPARE(read(deeper, "Left"), QStringLiteral("10"));
        QCOMPARE(read(other, "Left"), QStringLiteral("20"));
        QSettings file(programFile(), QSettings::IniFormat);
        QCOMPARE(file.value(QStringLiteral("Windows/Board/Left")).toString(), QStringLiteral("10"));
    }

    void nonTextValuesCountAsAbsent_data() {
        columns<QVariant>("stored");
        row("list", QVariant(QStringList{QStringLiteral("a"), QStringLiteral("b")}));
        row("bytes", QVariant(QByteArray("\x01\x02", 2)));
        row("typed value", QVariant(QSize(3, 4)));
    }
    void nonTextValuesCountAsAbsent() {
        QFETCH(QVariant, stored);
        {
            QSettings settings(QStringLiteral("Norvane"), QStringLiteral("Tavlo"));
            settings.setValue(QStringLiteral("UserName"), stored);
        }
        QCOMPARE(read(kKey, "UserName"), std::nullopt);
    }

    void missingOrUnusableNamesReadNothing_data() {
        columns<QString, QString>("key", "name");
        row("missing value", kKey, QStringLiteral("Nothing"));
        row("missing key", QStringLiteral("Software\\Norvane\\Nobody"), QStringLiteral("Nothing"));
        row("empty key", QString(), QStringLiteral("Nothing"));
        row("empty name", kKey, QString());
        row("name with a slash", kKey, QStringLiteral("a/b"));
    }
    void missingOrUnusableNamesReadNothing() {
        auto [key, name] = fetch<QString, QString>("key", "name");
        QCOMPARE(SettingsStore::ReadText(RegistryRoot::CurrentUser, key, name), std::nullopt);
        QCOMPARE(SettingsStore::DeleteValue(RegistryRoot::CurrentUser, key, name), false);
    }

    void unusableNamesAreNotWritten() {
        QVERIFY(!write(QString(), "X", QStringLiteral("1")));
        QVERIFY(!write(kKey, "a\\b", QStringLiteral("1")));
        QVERIFY(!QFile::exists(programFile()) ||
                QSettings(programFile(), QSettings::IniFormat).allKeys().isEmpty());
    }

    void deleteRemovesOnlyThatValue() {
        write(kKey, "AutoLogin", QStringLiteral("1"));
        write(kKey, "UserName", QStringLiteral("ann"));
        QVERIFY(SettingsStore::DeleteValue(RegistryRoot::CurrentUser, kKey,
                                           QStringLiteral("AutoLogin")));
        QCOMPARE(read(kKey, "AutoLogin"), std::nullopt);
        QCOMPARE(read(kKey, "UserName"), QStringLiteral("ann"));
        QVERIFY(!SettingsStore::DeleteValue(RegistryRoot::CurrentUser, kKey,
                                            QStringLiteral("AutoLogin")));
    }

    // A value changed behind the program's back is seen at the next read.
    void readsSeeOutsideChanges() {
        write(kKey, "IdleTime", QStringLiteral("15"));
        {
            QSettings settings(programFile(), QSettings::IniFormat);
            settings.setValue(QStringLiteral("IdleTime"), QStringLiteral("45 minutes"));
        }
        QCOMPARE(read(kKey, "IdleTime"), QStringLiteral("45 minutes"));
    }

    void addWritesAnEntryThatRunsTheProgram() {
        QVERIFY(!AutoStart::IsPresent());
        QVERIFY(AutoStart::Add());
        QCOMPARE(AutoStart::EntryLocation(), expectedLocation());
        QVERIFY(AutoStart::IsPresent());
        expectValidEntry(expectedLocation());
        QCOMPARE(entryValue(expectedLocation(), QStringLiteral("Type")),
                 QStringLiteral("Application"));
        QCOMPARE(programOfExecLine(entryValue(expectedLocation(), QStringLiteral("Exec"))),
                 QCoreApplication::applicationFilePath());
    }

    // Adding again keeps one entry; removing deletes it, and is quiet when there is none.
    void addingAgainKeepsOneEntryAndRemoveDeletesIt() {
        QVERIFY(AutoStart::Add());
        QVERIFY(AutoStart::Add());
        const QDir folder(QFileInfo(expectedLocation()).path());
        QCOMPARE(folder.entryList(QDir::Files), QStringList{QStringLiteral("tavlo.desktop")});
        QVERIFY(AutoStart::Remove());
        QVERIFY(!QFile::exists(expectedLocation()) && !AutoStart::IsPresent());
        QVERIFY(!AutoStart::Remove());
    }

    // A program installed under a folder whose name holds the characters an Exec line must
    // quote still starts from its entry.
    void awkwardInstallFolderIsQuoted() {
        QTemporaryDir root;
        const QString folder =
            root.path() + QStringLiteral("/My \"Apps\" $HOME `x` 100% back\\slash");
        QVERIFY(QDir().mkpath(folder));
        const QString copy = folder + QStringLiteral("/tavlo");
        QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), copy));
        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("TAVLO_AUTOSTART_PROBE"), QStringLiteral("1"));
        child.setProcessEnvironment(env);
        child.start(copy, {});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.exitCode(), 0);
        expectValidEntry(expectedLocation());
        QCOMPARE(programOfExecLine(entryValue(expectedLocation(), QStringLiteral("Exec"))), copy);
    }

    void secondProcessOfTheSameExecutableAsksTheFirst() {
        SingleInstance first;
        QVERIFY(first.Claim());
        QSignalSpy raised(&first, &SingleInstance::RaiseRequested);
        auto second = startInstance(QStringLiteral("second"));
        QTRY_COMPARE_WITH_TIMEOUT(second->state(), QProcess::NotRunning, 30000);
        QCOMPARE(second->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 0);
        QTRY_COMPARE(raised.size(), 1);
        QCOMPARE(raised.at(0).at(0).toString(), QStringLiteral("Tavlo"));
    }

    void theNextInstanceMayStartOnceTheFirstHasGone() {
        {
            SingleInstance first(QStringLiteral("tavlo-test-release"));
            QVERIFY(first.Claim());
        }
        SingleInstance next(QStringLiteral("tavlo-test-release"));
        QVERIFY(next.Claim());
    }

    // An instance that died without cleaning up leaves its lock and socket behind; they don't
    // keep the program from starting, and the new first instance is reachable.
    void aDeadFirstInstanceDoesNotBlock() {
        auto holder = startInstance(QStringLiteral("hold"));
        QVERIFY(holder->waitForStarted(30000));
        QByteArray said;
        while (!said.contains("claimed") && holder->waitForReadyRead(30000))
            said += holder->readAllStandardOutput();
        QVERIFY(said.contains("claimed"));
        QCOMPARE(holder->state(), QProcess::Running);
        SingleInstance blocked;
        QVERIFY(!blocked.Claim());
        holder->kill();
        QVERIFY(holder->waitForFinished(30000));

        SingleInstance first;
        QVERIFY(QFile::exists(first.LockFilePath()));
        QVERIFY(first.Claim());
        QSignalSpy raised(&first, &SingleInstance::RaiseRequested);
        SingleInstance second;
        QVERIFY(second.AskFirstToRaise(QStringLiteral("Tavlo")));
        QTRY_COMPARE(raised.size(), 1);
    }

    void askingWithNoFirstInstanceFails() {
        SingleInstance lonely(QStringLiteral("tavlo-test-nobody"));
        QVERIFY(!lonely.AskFirstToRaise(QStringLiteral("Tavlo")));
    }

    // Whatever else reaches the socket is dropped, and the first instance keeps answering.
    void strayRequestsAreIgnored_data() {
        columns<QByteArray>("request");
        row("unknown verb", QByteArray("quit\n"));
        row("verb glued to text", QByteArray("raiseTavlo\n"));
        row("no line end", QByteArray("raise Tavlo"));
        row("endless line", QByteArray(5000, 'x'));
        row("nothing", QByteArray());
    }
    void strayRequestsAreIgnored() {
        QFETCH(QByteArray, request);
        SingleInstance first(QStringLiteral("tavlo-test-stray"));
        QVERIFY(first.Claim());
        QSignalSpy raised(&first, &SingleInstance::RaiseRequested);
        {
            QLocalSocket stray;
            stray.connectToServer(first.ServerName());
            QVERIFY(stray.waitForConnected(5000));
            stray.write(request);
            stray.waitForBytesWritten(5000);
            stray.disconnectFromServer();
        }
        SingleInstance second(QStringLiteral("tavlo-test-stray"));
        QVERIFY(second.AskFirstToRaise(QStringLiteral("Board")));
        QTRY_COMPARE(raised.size(), 1);
        QCOMPARE(raised.at(0).at(0).toString(), QStringLiteral("Board"));
    }

    void lockAndSocketLiveInTheRuntimeFolder() {
        SingleInstance instance;
        const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
        QCOMPARE(QFileInfo(instance.LockFilePath()).path(), runtime);
        QCOMPARE(QFileInfo(instance.ServerName()).path(), runtime);
        QVERIFY(SingleInstance::DefaultKey().startsWith(QStringLiteral("tavlo-")));
    }
};

// Run again as a probe, this program is another instance of itself (see runInstanceProbe) or a
// program that adds its own auto-start entry.
int main(int argc, char** argv) {
    if (qEnvironmentVariableIsSet(kProbe))
        return runInstanceProbe(argc, argv);
    if (qEnvironmentVariableIsSet("TAVLO_AUTOSTART_PROBE")) {
        QCoreApplication app(argc, argv);
        return AutoStart::Add() ? 0 : 1;
    }
    FreshUserFolders folders;
    QCoreApplication app(argc, argv);
    TestPlatform test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_platform.moc"
