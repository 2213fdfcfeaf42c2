#pragma once

#include "base/Forms.h"
#include "base/MsgBox.h"
#include "config/TLSettings.h"
#include "config/frmTLSettings.h"
#include "config/modTLRegistry.h"
#include "data/TLFunctions.h"
#include "platform/AutoStart.h"
#include "platform/SettingsStore.h"
#include "shell/TLMain.h"
#include <QCoreApplication>
#include <QSettings>
#include <optional>

// The state every settings test starts from: no stored settings, no auto-start entry, no
// settings dialog loaded, fresh live settings, and message boxes recorded instead of shown.
class SettingsFixture {
public:
    QList<MsgBoxCall> boxes;

    void reset() {
        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QSettings stored(QStringLiteral("Norvane"), QStringLiteral("Tavlo"));
        stored.clear();
        stored.sync();
        AutoStart::Remove();
        TLMain().Settings() = TLSettings();
        TLMain().ActiveOrganization().ChatDisabled = false;
        boxes.clear();
        SetMsgBoxHook([this](const MsgBoxCall& call) {
            boxes << call;
            return int(vb::vbOK);
        });
    }

    static void store(const QString& name, const QString& value) {
        SettingsStore::WriteText(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey, name, value);
    }
    static std::optional<QString> stored(const QString& name) {
        return SettingsStore::ReadText(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey, name);
    }
    static QString encipher(const QString& text) { return TLMain().Functions().EncodeDecode(text); }
    static TLSettings& live() { return TLMain().Settings(); }
};
