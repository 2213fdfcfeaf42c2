#include "FreshUserFolders.h"
#include "platform/SettingsStore.h"

#include "Rows.h"
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

} // namespace

class TestSettingsStore : public QObject {
    Q_OBJECT
private slots:
    void init() { clearProgramSettings(); }

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
        QFETCH(QString, key);
        QFETCH(QString, name);
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
};

TAVLO_TEST_MAIN_WITH(QCoreApplication, TestSettingsStore)
#include "tst_settingsstore.moc"
