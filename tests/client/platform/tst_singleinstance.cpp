#include "FreshUserFolders.h"
#include "platform/SingleInstance.h"

#include "Rows.h"
#include <QCoreApplication>
#include <QLocalSocket>
#include <QProcess>
#include <QtTest>
#include <memory>

namespace {

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
int runProbe(int argc, char** argv) {
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

class TestSingleInstance : public QObject {
    Q_OBJECT
private slots:
    void secondObjectSeesTheFirstAndAsksItToRaise() {
        SingleInstance first(QStringLiteral("tavlo-test-pair"));
        SingleInstance second(QStringLiteral("tavlo-test-pair"));
        QVERIFY(first.Claim());
        QVERIFY(first.IsFirst());
        QVERIFY(!second.Claim());
        QVERIFY(!second.IsFirst());
        QSignalSpy raised(&first, &SingleInstance::RaiseRequested);
        QVERIFY(second.AskFirstToRaise(QStringLiteral("Tavlo")));
        QTRY_COMPARE(raised.size(), 1);
        QCOMPARE(raised.at(0).at(0).toString(), QStringLiteral("Tavlo"));
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

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsSet(kProbe))
        return runProbe(argc, argv);
    FreshUserFolders folders;
    QCoreApplication app(argc, argv);
    TestSingleInstance test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_singleinstance.moc"
