#include "platform/AutoStart.h"

#ifdef Q_OS_WIN

#include "platform/SettingsStore.h"
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

const QString kRunKey = QStringLiteral("Software\\Microsoft\\Windows\\CurrentVersion\\Run");
const QString kValueName = QStringLiteral("Tavlo");

} // namespace

namespace AutoStart {

// The program's folder, "\", the executable's name and ".exe", without quotes.
QString Command() {
    const QString folder = QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
    const QString name = QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
    return folder + QLatin1Char('\\') + name + QStringLiteral(".exe");
}

QString EntryLocation() {
    return QStringLiteral("HKEY_LOCAL_MACHINE\\") + kRunKey + QLatin1Char('\\') + kValueName;
}

bool IsPresent() {
    return SettingsStore::ReadText(RegistryRoot::LocalMachine, kRunKey, kValueName).has_value();
}

bool Add() {
    return SettingsStore::WriteText(RegistryRoot::LocalMachine, kRunKey, kValueName, Command());
}

bool Remove() {
    return SettingsStore::DeleteValue(RegistryRoot::LocalMachine, kRunKey, kValueName);
}

} // namespace AutoStart

#endif
