#include "FreshUserFolders.h"
#include "platform/SettingsStore.h"

#include <QCoreApplication>
#include <QSettings>
#include <QSize>
#include <QStandardPaths>
#include <QtTest>

namespace {

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

QString everyByte() {
    QString text;
    for (int code = 1; code < 256; ++code)
        text += QChar(code);
    return text;
}

} // namespace

class TestSettingsStore : public QObject {
    Q_OBJECT
private slots:
    void init() { clearProgramSettings(); }

    void textRoundTrips_data() {
        QTest::addColumn<QString>("value");
        QTest::newRow("empty") << QString();
        QTest::newRow("url") << QStringLiteral("http://localhost:8080");
        QTest::newRow("comma, read back as one text") << QStringLiteral("a, b, c");
        QTest::newRow("blanks around") << QStringLiteral("  padded  ");
        QTest::newRow("leading at sign") << QStringLiteral("@Variant(abc)");
        QTest::newRow("ini punctuation") << QStringLiteral("k=v;[x]#y\"q\"\\z");
        QTest::newRow("control characters") << QStringLiteral("\x01\x02\t\r\n\x1f");
        QTest::newRow("every single byte") << everyByte();
        QTest::newRow("beyond one byte") << QStringLiteral(u"\u03a9\u043c\u0438\u0440");
    }
    void textRoundTrips() {
        QFETCH(QString, value);
        QVERIFY(SettingsStore::WriteText(RegistryRoot::CurrentUser, kKey,
                                         QStringLiteral("Password"), value));
        const auto read =
            SettingsStore::ReadText(RegistryRoot::CurrentUser, kKey, QStringLiteral("Password"));
        QVERIFY(read.has_value());
        QCOMPARE(*read, value);
    }

    // The program's key is the INI file Norvane/Tavlo.conf, each value a top-level key.
    void programKeyIsTheProgramsIniFile() {
        QVERIFY(SettingsStore::WriteText(RegistryRoot::CurrentUser, kKey,
                                         QStringLiteral("MaxColumns"), QStringLiteral("7")));
        QVERIFY(QFile::exists(programFile()));
        QSettings file(programFile(), QSettings::IniFormat);
        QCOMPARE(file.value(QStringLiteral("MaxColumns")).toString(), QStringLiteral("7"));
        QCOMPARE(file.childGroups(), QStringList());
    }

    void deeperKeysAreGroupsAndOtherProgramsOtherFiles() {
        const QString deeper = kKey + QStringLiteral("\\Windows\\Board");
        const QString other = QStringLiteral("Software\\Someone\\Else");
        QVERIFY(SettingsStore::WriteText(RegistryRoot::CurrentUser, deeper, QStringLiteral("Left"),
                                         QStringLiteral("10")));
        QVERIFY(SettingsStore::WriteText(RegistryRoot::CurrentUser, other, QStringLiteral("Left"),
                                         QStringLiteral("20")));
        QCOMPARE(SettingsStore::ReadText(RegistryRoot::CurrentUser, kKey, QStringLiteral("Left")),
                 std::nullopt);
        QCOMPARE(SettingsStore::ReadText(RegistryRoot::CurrentUser, deeper, QStringLiteral("Left")),
                 QStringLiteral("10"));
        QCOMPARE(SettingsStore::ReadText(RegistryRoot::CurrentUser, other, QStringLiteral("Left")),
                 QStringLiteral("20"));
        QSettings file(programFile(), QSettings::IniFormat);
        QCOMPARE(file.value(QStringLiteral("Windows/Board/Left")).toString(), QStringLiteral("10"));
    }

    void nonTextValuesCountAsAbsent_data() {
        QTest::addColumn<QVariant>("stored");
        QTest::newRow("list") << QVariant(QStringList{QStringLiteral("a"), QStringLiteral("b")});
        QTest::newRow("bytes") << QVariant(QByteArray("\x01\x02", 2));
        QTest::newRow("typed value") << QVariant(QSize(3, 4));
    }
    void nonTextValuesCountAsAbsent() {
        QFETCH(QVariant, stored);
        {
            QSettings settings(QStringLiteral("Norvane"), QStringLiteral("Tavlo"));
            settings.setValue(QStringLiteral("UserName"), stored);
        }
        QCOMPARE(
            SettingsStore::ReadText(RegistryRoot::CurrentUser, kKey, QStringLiteral("UserName")),
            std::nullopt);
    }

    void missingOrUnusableNamesReadNothing_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("name");
        QTest::newRow("missing value") << kKey << QStringLiteral("Nothing");
        QTest::newRow("missing key")
            << QStringLiteral("Software\\Norvane\\Nobody") << QStringLiteral("Nothing");
        QTest::newRow("empty key") << QString() << QStringLiteral("Nothing");
        QTest::newRow("empty name") << kKey << QString();
        QTest::newRow("name with a slash") << kKey << QStringLiteral("a/b");
    }
    void missingOrUnusableNamesReadNothing() {
        QFETCH(QString, key);
        QFETCH(QString, name);
        QCOMPARE(SettingsStore::ReadText(RegistryRoot::CurrentUser, key, name), std::nullopt);
        QCOMPARE(SettingsStore::DeleteValue(RegistryRoot::CurrentUser, key, name), false);
    }

    void unusableNamesAreNotWritten() {
        QVERIFY(!SettingsStore::WriteText(RegistryRoot::CurrentUser, QString(), QStringLiteral("X"),
                                          QStringLiteral("1")));
        QVERIFY(!SettingsStore::WriteText(RegistryRoot::CurrentUser, kKey, QStringLiteral("a\\b"),
                                          QStringLiteral("1")));
        QVERIFY(!QFile::exists(programFile()) ||
                QSettings(programFile(), QSettings::IniFormat).allKeys().isEmpty());
    }

    void deleteRemovesOnlyThatValue() {
        SettingsStore::WriteText(RegistryRoot::CurrentUser, kKey, QStringLiteral("AutoLogin"),
                                 QStringLiteral("1"));
        SettingsStore::WriteText(RegistryRoot::CurrentUser, kKey, QStringLiteral("UserName"),
                                 QStringLiteral("ann"));
        QVERIFY(SettingsStore::DeleteValue(RegistryRoot::CurrentUser, kKey,
                                           QStringLiteral("AutoLogin")));
        QCOMPARE(
            SettingsStore::ReadText(RegistryRoot::CurrentUser, kKey, QStringLiteral("AutoLogin")),
            std::nullopt);
        QCOMPARE(
            SettingsStore::ReadText(RegistryRoot::CurrentUser, kKey, QStringLiteral("UserName")),
            QStringLiteral("ann"));
        QVERIFY(!SettingsStore::DeleteValue(RegistryRoot::CurrentUser, kKey,
                                            QStringLiteral("AutoLogin")));
    }

    // A value changed behind the program's back is seen at the next read.
    void readsSeeOutsideChanges() {
        SettingsStore::WriteText(RegistryRoot::CurrentUser, kKey, QStringLiteral("IdleTime"),
                                 QStringLiteral("15"));
        {
            QSettings settings(programFile(), QSettings::IniFormat);
            settings.setValue(QStringLiteral("IdleTime"), QStringLiteral("45 minutes"));
        }
        QCOMPARE(
            SettingsStore::ReadText(RegistryRoot::CurrentUser, kKey, QStringLiteral("IdleTime")),
            QStringLiteral("45 minutes"));
    }
};

TAVLO_TEST_MAIN_WITH(QCoreApplication, TestSettingsStore)
#include "tst_settingsstore.moc"
