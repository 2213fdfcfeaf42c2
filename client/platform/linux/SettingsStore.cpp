#include "platform/SettingsStore.h"

#include <QSettings>
#include <QStringList>
#include <memory>

namespace {

// Where a key lives: the maker and program name the file, the deeper parts are groups.
struct Location {
    QString maker;
    QString program;
    QString group;
};

std::optional<Location> locate(const QString& keyPath) {
    QStringList parts = keyPath.split(QLatin1Char('\\'), Qt::SkipEmptyParts);
    if (!parts.isEmpty() &&
        parts.first().compare(QLatin1String("Software"), Qt::CaseInsensitive) == 0)
        parts.removeFirst();
    if (parts.isEmpty())
        return std::nullopt;
    Location at;
    at.maker = parts.takeFirst();
    if (!parts.isEmpty())
        at.program = parts.takeFirst();
    at.group = parts.join(QLatin1Char('/'));
    return at;
}

// A value name may not carry the INI's group separators; such a name can't be stored.
bool usableName(const QString& valueName) {
    return !valueName.isEmpty() && !valueName.contains(QLatin1Char('/')) &&
           !valueName.contains(QLatin1Char('\\'));
}

std::unique_ptr<QSettings> open(RegistryRoot root, const Location& at) {
    const auto scope =
        root == RegistryRoot::LocalMachine ? QSettings::SystemScope : QSettings::UserScope;
    auto settings =
        std::make_unique<QSettings>(QSettings::NativeFormat, scope, at.maker, at.program);
    if (!at.group.isEmpty())
        settings->beginGroup(at.group);
    return settings;
}

bool commit(QSettings& settings) {
    settings.sync();
    return settings.status() == QSettings::NoError && settings.isWritable();
}

} // namespace

namespace SettingsStore {

std::optional<QString> ReadText(RegistryRoot root, const QString& keyPath,
                                const QString& valueName) {
    const auto at = locate(keyPath);
    if (!at || !usableName(valueName))
        return std::nullopt;
    const auto settings = open(root, *at);
    const QVariant value = settings->value(valueName);
    if (value.typeId() != QMetaType::QString)
        return std::nullopt; // missing, a list, bytes or a typed value: not text
    return value.toString();
}

bool CreateKey(RegistryRoot root, const QString& keyPath) {
    const auto at = locate(keyPath);
    if (!at)
        return false;
    // An INI file has no empty groups; the key comes into being with its first value.
    return open(root, *at)->isWritable();
}

bool WriteText(RegistryRoot root, const QString& keyPath, const QString& valueName,
               const QString& value) {
    const auto at = locate(keyPath);
    if (!at || !usableName(valueName))
        return false;
    const auto settings = open(root, *at);
    settings->setValue(valueName, value);
    return commit(*settings);
}

bool DeleteValue(RegistryRoot root, const QString& keyPath, const QString& valueName) {
    const auto at = locate(keyPath);
    if (!at || !usableName(valueName))
        return false;
    const auto settings = open(root, *at);
    if (!settings->contains(valueName))
        return false;
    settings->remove(valueName);
    return commit(*settings);
}

} // namespace SettingsStore
