#pragma once

#include "RegistryRoot.h"
#include <QString>
#include <optional>

// The store behind the program's settings: keys (paths with "\" between the parts, such as
// "Software\Norvane\Tavlo") holding named text values. On Windows this is the registry. On
// Linux a key "Software\<Maker>\<Program>\<Sub>\..." is the INI file of QSettings(<Maker>,
// <Program>) (for the user's root: $XDG_CONFIG_HOME/<Maker>/<Program>.conf), with the deeper
// parts as groups; values are stored as text.
namespace SettingsStore {

// The text of a value. Nothing when the key or the value is missing, or when the value is of
// another type than text.
std::optional<QString> ReadText(RegistryRoot root, const QString& keyPath,
                                const QString& valueName);

// Makes the key if it doesn't exist. False when it can't be made.
bool CreateKey(RegistryRoot root, const QString& keyPath);

// Writes a text value, making the key if needed. False when it can't be written.
bool WriteText(RegistryRoot root, const QString& keyPath, const QString& valueName,
               const QString& value);

// Deletes a value. False when the key can't be opened or the value isn't there.
bool DeleteValue(RegistryRoot root, const QString& keyPath, const QString& valueName);

} // namespace SettingsStore
