#include "FreshUserFolders.h"
#include "platform/AutoStart.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

namespace {

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

} // namespace

class TestAutoStart : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { QFile::remove(expectedLocation()); }

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

    void addingAgainKeepsOneEntry() {
        QVERIFY(AutoStart::Add());
        QVERIFY(AutoStart::Add());
        const QDir folder(QFileInfo(expectedLocation()).path());
        QCOMPARE(folder.entryList(QDir::Files), QStringList{QStringLiteral("tavlo.desktop")});
    }

    void removeDeletesTheEntryAndIsQuietWhenThereIsNone() {
        QVERIFY(AutoStart::Add());
        QVERIFY(AutoStart::Remove());
        QVERIFY(!QFile::exists(expectedLocation()));
        QVERIFY(!AutoStart::IsPresent());
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
};

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsSet("TAVLO_AUTOSTART_PROBE")) {
        QCoreApplication app(argc, argv);
        return AutoStart::Add() ? 0 : 1;
    }
    FreshUserFolders folders;
    QCoreApplication app(argc, argv);
    TestAutoStart test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_autostart.moc"
