#include "FreshUserFolders.h"
#include "Rows.h"
#include "platform/AutoStart.h"
#include "platform/CommandLine.h"
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

// A file in the user's configuration folder.
QString configFile(const char* name) {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + '/' +
           QString::fromLatin1(name);
}

bool write(const QString& key, const QString& name, const QString& value) {
    return SettingsStore::WriteText(RegistryRoot::CurrentUser, key, name, value);
}
std::optional<QString> read(const QString& key, const QString& name) {
    return SettingsStore::ReadText(RegistryRoot::CurrentUser, key, name);
}

// Undoes backslash escapes up to an unescaped `end`; the entry's string layer also spells a
// blank as "\s" (the paths here hold no line breaks or tabs, its other letter escapes).
QString unescape(const QString& text, QChar end, bool stringLayer) {
    QString out;
    for (qsizetype i = 0; i < text.size() && text[i] != end; ++i) {
        const bool escaped = text[i] == u'\\' && i + 1 < text.size();
        if (escaped)
            ++i;
        out += stringLayer && escaped && text[i] == u's' ? QChar(u' ') : text[i];
    }
    return out;
}

// The program the entry's Exec line runs, read as a session manager does: the line's string
// escapes undone, then its first argument unquoted, and "%%" is one percent sign. An entry the
// validator refuses gives its complaint instead.
QString programOfEntry(const QString& path) {
    QProcess validate;
    validate.start(QStringLiteral("desktop-file-validate"), {path});
    validate.waitForFinished(30000);
    const QByteArray said = validate.readAllStandardOutput();
    if (validate.exitStatus() != QProcess::NormalExit || validate.exitCode() != 0 ||
        !said.isEmpty())
        return QStringLiteral("invalid: ") + QString::fromUtf8(said);
    QFile file(path);
    QString line;
    if (file.open(QIODevice::ReadOnly))
        for (const QByteArray& each : file.readAll().split('\n'))
            if (each.startsWith("Exec="))
                line = unescape(QString::fromUtf8(each.mid(5)), QChar(), true);
    QString program =
        line.startsWith(u'"') ? unescape(line.mid(1), u'"', false) : line.section(u' ', 0, 0);
    return program.replace(QStringLiteral("%%"), QStringLiteral("%"));
}

// Runs a program (this one, by default) again in a role: another instance, or an installed copy.
std::unique_ptr<QProcess> startProbe(const QString& role, const QString& program = {}) {
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("TAVLO_PROBE"), role);
    process->setProcessEnvironment(env);
    process->start(program.isEmpty() ? QCoreApplication::applicationFilePath() : program, {});
    return process;
}

} // namespace

// The program's view of the machine: the network, the command line, the stored settings, the
// auto-start entry and the one instance a user.
class TestPlatform : public QObject {
    Q_OBJECT
private slots:
    void init() { QSettings(QStringLiteral("Norvane"), QStringLiteral("Tavlo")).clear(); }
    void cleanup() {
        NetworkInterfaces::SetSource({});
        CommandLine::SetArguments(std::nullopt);
        QFile::remove(configFile("autostart/tavlo.desktop"));
    }

    void network_data() {
        columns<List, bool, QString>("interfaces", "alive", "ip");
        row("loopback only", List{kLoopback}, false, "127.0.0.1");
        row("cable out, its address kept", List{kLoopback, kUnplugged}, false, "10.0.0.5");
        row("interface down", List{kLoopback, kDown}, false, "127.0.0.1");
        row("running without address", List{kLoopback, kNoAddress}, false, "127.0.0.1");
        row("wired", List{kLoopback, kWired}, true, "192.168.1.20");
        row("IPv6 only", List{kIpv6Only}, true, "127.0.0.1");
        row("one of several", List{kDown, kUnplugged, kWired}, true, "10.0.0.5");
        row("skips IPv6 and down interfaces", List{kLoopback, kDown, kIpv6Only, kWired}, true,
            "192.168.1.20");
        row("loopback flag missing, loopback address",
            List{nic("lo", true, true, false, {"127.0.0.1"})}, false, "127.0.0.1");
    }
    // Whether the network is alive, and the address the program reports for this machine.
    void network() {
        auto [interfaces, alive, ip] = fetch<List, bool, QString>("interfaces", "alive", "ip");
        NetworkInterfaces::SetSource([&] { return interfaces; });
        QCOMPARE(NetworkState::IsNetworkAlive(), alive);
        QCOMPARE(HostInfo::LocalIP(), ip);
    }

    void commandLine_data() {
        columns<QStringList, QString, bool>("arguments", "text", "ignoreNetwork");
        row("none", QStringList{}, "", false);
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

    void valuesReadBack_data() {
        columns<QVariant>("stored");
        row("empty", QVariant(QString()));
        row("comma, read back as one text", QVariant(QStringLiteral("a, b, c")));
        row("blanks around", QVariant(QStringLiteral("  padded  ")));
        row("leading at sign", QVariant(QStringLiteral("@Variant(abc)")));
        row("ini punctuation, control characters",
            QVariant(QStringLiteral("k=v;[x]#y\"q\"\\z\x01\t\r\n\xff")));
        row("beyond one byte", QVariant(QStringLiteral(u"\u03a9\u043c\u0438\u0440")));
        row("list", QVariant(QStringList{QStringLiteral("a"), QStringLiteral("b")}));
        row("bytes", QVariant(QByteArray("\x01\x02", 2)));
        row("typed value", QVariant(QSize(3, 4)));
    }
    // A text reads back as it was written; a value of another type, stored by someone else,
    // reads as absent.
    void valuesReadBack() {
        QFETCH(QVariant, stored);
        const bool text = stored.typeId() == QMetaType::QString;
        if (text)
            QVERIFY(write(kKey, "UserName", stored.toString()));
        else
            QSettings(QStringLiteral("Norvane"), QStringLiteral("Tavlo"))
                .setValue(QStringLiteral("UserName"), stored);
        QCOMPARE(read(kKey, "UserName"), text ? std::optional(stored.toString()) : std::nullopt);
    }

    // The program's key is the INI file Norvane/Tavlo.conf, each value a top-level key, deeper
    // keys its groups, another program's key another file. A change made behind the program's
    // back is seen at the next read, and a delete removes only its value.
    void keysAreFilesAndGroups() {
        const QString deeper = kKey + QStringLiteral("\\Windows\\Board");
        QVERIFY(write(kKey, "IdleTime", QStringLiteral("15")));
        QVERIFY(write(deeper, "Left", QStringLiteral("10")));
        QVERIFY(write(QStringLiteral("Software\\Someone\\Else"), "Left", QStringLiteral("20")));
        QCOMPARE(read(kKey, "Left"), std::nullopt);
        QSettings file(configFile("Norvane/Tavlo.conf"), QSettings::IniFormat);
        QCOMPARE(file.allKeys(), QStringList({"IdleTime", "Windows/Board/Left"}));
        QSettings other(configFile("Someone/Else.conf"), QSettings::IniFormat);
        QCOMPARE(other.value(QStringLiteral("Left")).toString(), QStringLiteral("20"));
        file.setValue(QStringLiteral("IdleTime"), QStringLiteral("45 minutes"));
        file.sync();
        QCOMPARE(read(kKey, "IdleTime"), QStringLiteral("45 minutes"));
        QVERIFY(SettingsStore::DeleteValue(RegistryRoot::CurrentUser, kKey, "IdleTime"));
        QCOMPARE(read(kKey, "IdleTime"), std::nullopt);
        QCOMPARE(read(deeper, "Left"), QStringLiteral("10"));
    }

    void missingOrUnusableNames_data() {
        columns<QString, QString, bool>("key", "name", "writable");
        row("missing value", kKey, "Nothing", true);
        row("missing key", QStringLiteral("Software\\Norvane\\Nobody"), "Nothing", true);
        row("empty key", QString(), "Nothing", false);
        row("empty name", kKey, QString(), false);
        row("name with a slash", kKey, "a/b", false);
        row("name with a backslash", kKey, "a\\b", false);
    }
    // Nothing to read or delete; an unusable name isn't written either.
    void missingOrUnusableNames() {
        auto [key, name, writable] = fetch<QString, QString, bool>("key", "name", "writable");
        QCOMPARE(read(key, name), std::nullopt);
        QCOMPARE(SettingsStore::DeleteValue(RegistryRoot::CurrentUser, key, name), false);
        QCOMPARE(write(key, name, QStringLiteral("1")), writable);
        QCOMPARE(read(key, name).has_value(), writable);
    }

    // Adding again keeps one valid entry that runs this program; removing deletes it, and is
    // quiet when there is none.
    void autoStartEntryIsAddedOnceAndRemoved() {
        QVERIFY(!AutoStart::IsPresent());
        QVERIFY(AutoStart::Add());
        QVERIFY(AutoStart::Add());
        QCOMPARE(QDir(configFile("autostart")).entryList(QDir::Files),
                 QStringList{"tavlo.desktop"});
        QCOMPARE(programOfEntry(AutoStart::EntryLocation()),
                 QCoreApplication::applicationFilePath());
        QVERIFY(AutoStart::Remove());
        QVERIFY(!QFile::exists(AutoStart::EntryLocation()) && !AutoStart::IsPresent());
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
        const auto child = startProbe(QStringLiteral("autostart"), copy);
        QVERIFY(child->waitForFinished(30000));
        QCOMPARE(child->exitCode(), 0);
        QCOMPARE(programOfEntry(AutoStart::EntryLocation()), copy);
    }

    // Another process of this executable holds the key until it dies; the lock and socket it
    // leaves behind, in the runtime folder, don't keep the next first instance from starting
    // and being asked to raise its window. Once that one has gone, nobody answers.
    void theFirstInstanceHoldsTheKeyUntilItGoes() {
        auto holder = startProbe(QStringLiteral("instance"));
        QByteArray said;
        while (!said.contains("claimed") && holder->waitForReadyRead(30000))
            said += holder->readAllStandardOutput();
        QVERIFY(said.contains("claimed"));
        SingleInstance second;
        QVERIFY(!second.Claim());
        holder->kill();
        QVERIFY(holder->waitForFinished(30000));
        {
            SingleInstance first;
            const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
            QCOMPARE(QFileInfo(first.LockFilePath()).path(), runtime);
            QCOMPARE(QFileInfo(first.ServerName()).path(), runtime);
            QVERIFY(QFile::exists(first.LockFilePath()));
            QVERIFY(first.Claim());
            QSignalSpy raised(&first, &SingleInstance::RaiseRequested);
            QVERIFY(second.AskFirstToRaise(QStringLiteral("Tavlo")));
            QTRY_COMPARE(raised.size(), 1);
            QCOMPARE(raised.at(0).at(0).toString(), QStringLiteral("Tavlo"));
        }
        QVERIFY(!second.AskFirstToRaise(QStringLiteral("Tavlo")));
        QVERIFY(second.Claim());
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
        QLocalSocket stray;
        stray.connectToServer(first.ServerName());
        QVERIFY(stray.waitForConnected(5000));
        stray.write(request);
        stray.waitForBytesWritten(5000);
        stray.disconnectFromServer();
        SingleInstance second(QStringLiteral("tavlo-test-stray"));
        QVERIFY(second.AskFirstToRaise(QStringLiteral("Board")));
        QTRY_COMPARE(raised.size(), 1);
        QCOMPARE(raised.at(0).at(0).toString(), QStringLiteral("Board"));
    }
};

// Run again as a probe, this program is a first instance that stays until killed, or an installed
// copy that adds its own auto-start entry, both in the folders of the test that started it.
int main(int argc, char** argv) {
    const QByteArray probe = qgetenv("TAVLO_PROBE");
    const auto folders = probe.isEmpty() ? std::make_unique<FreshUserFolders>() : nullptr;
    QCoreApplication app(argc, argv);
    SingleInstance instance;
    if (probe == "autostart")
        return AutoStart::Add() ? 0 : 1;
    if (probe == "instance") {
        if (!instance.Claim())
            return 1;
        fputs("claimed\n", stdout);
        fflush(stdout);
        return app.exec();
    }
    TestPlatform test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_platform.moc"
