#pragma once

#include "BoxRecorder.h"
#include "base/Forms.h"
#include "config/TLSettings.h"
#include "config/frmTLSettings.h"
#include "config/modTLRegistry.h"
#include "platform/AutoStart.h"
#include "platform/SettingsStore.h"
#include "shell/TLMain.h"
#include <QCoreApplication>
#include <QSettings>
#include <optional>

// The state every settings test starts from: no stored settings, no auto-start entry, no settings
// dialog loaded, fresh live settings, and message boxes recorded instead of shown.
class SettingsFixture {
public:
    BoxRecorder boxes;

    void reset() {
        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QSettings stored(QStringLiteral("Norvane"), QStringLiteral("Tavlo"));
        stored.clear();
        stored.sync();
        AutoStart::Remove();
        TLMain().Settings() = TLSettings();
        TLMain().ActiveOrganization().ChatDisabled = false;
        boxes.install();
    }

    static void store(const QString& name, const QString& value) {
        SettingsStore::WriteText(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey, name, value);
    }
    static std::optional<QString> stored(const QString& name) {
        return SettingsStore::ReadText(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey, name);
    }
    static TLSettings& live() { return TLMain().Settings(); }
};
