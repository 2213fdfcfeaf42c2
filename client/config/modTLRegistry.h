#pragma once

#include "platform/RegistryRoot.h"
#include <QString>

// The program's settings in the per-user store, and their two copies: the controls of
// frmTLSettings, which are the working copy, and TLSettings, which the program reads.
namespace modTLRegistry {

// The key that holds every setting of the program.
inline const QString kTavloKey = QStringLiteral("Software\\Norvane\\Tavlo");
inline const QString kNorvaneKey = QStringLiteral("Software\\Norvane");

// A text value up to its first NUL; empty text when the key or value is missing or the value
// isn't text.
QString GetRegistryValue(RegistryRoot root, const QString& keyPath, const QString& valueName);

// Writes a text value, making the key if needed. Failures pass unnoticed.
void SetRegistryValue(RegistryRoot root, const QString& keyPath, const QString& valueName,
                      const QString& value);

// Stored values into the dialog's controls, then from the controls into TLSettings.
void LoadSettings();

// The dialog's controls into the store (and the auto-start entry), then into TLSettings.
void SaveSettings();

} // namespace modTLRegistry
