#include "FreshUserFolders.h"
#include "platform/CommandLine.h"
#include "platform/Desktop.h"
#include "platform/HostInfo.h"
#include "platform/NetworkState.h"

#include "Rows.h"
#include <QCoreApplication>
#include <QtTest>

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

} // namespace

class TestNetworkState : public QObject {
    Q_OBJECT
private slots:
    void cleanup() {
        NetworkInterfaces::SetSource({});
        CommandLine::SetArguments(std::nullopt);
        Desktop::SetOpener({});
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
        QFETCH(List, interfaces);
        QFETCH(bool, alive);
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
        QFETCH(List, interfaces);
        QFETCH(QString, ip);
        NetworkInterfaces::SetSource([&] { return interfaces; });
        QCOMPARE(HostInfo::LocalIP(), ip);
    }

    void hostNameIsTheMachines() {
        QVERIFY(!HostInfo::LocalHostName().isEmpty());
        QCOMPARE(HostInfo::LocalHostName(), QSysInfo::machineHostName());
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
        QFETCH(QStringList, arguments);
        QFETCH(QString, text);
        QFETCH(bool, ignoreNetwork);
        CommandLine::SetArguments(arguments);
        QCOMPARE(CommandLine::Text(), text);
        QCOMPARE(CommandLine::HasIgnoreNetwork(), ignoreNetwork);
    }

    void desktopOpensFilesByTheirFullPath() {
        QList<QUrl> opened;
        Desktop::SetOpener([&](const QUrl& url) {
            opened << url;
            return true;
        });
        QVERIFY(Desktop::OpenFile(QStringLiteral("help/Tavlo.html")));
        QVERIFY(
            Desktop::OpenUrl(QUrl(QStringLiteral("http://localhost:8080/Administrator.asp?x=1"))));
        QVERIFY(!Desktop::OpenFile(QString()));
        QVERIFY(!Desktop::OpenUrl(QUrl()));
        QCOMPARE(opened.size(), 2);
        QCOMPARE(opened[0],
                 QUrl::fromLocalFile(QDir::current().absoluteFilePath("help/Tavlo.html")));
        QCOMPARE(opened[1].toString(),
                 QStringLiteral("http://localhost:8080/Administrator.asp?x=1"));
    }
};

TAVLO_TEST_MAIN_WITH(QCoreApplication, TestNetworkState)
#include "tst_networkstate.moc"
