#include "modTLRegistry.h"

#include "SettingValues.h"
#include "TLSettings.h"
#include "base/Forms.h"
#include "base/Regional.h"
#include "config/frmTLSettings.h"
#include "data/TLFunctions.h"
#include "platform/AutoStart.h"
#include "platform/SettingsStore.h"
#include "shell/TLMain.h"
#include <limits>
#include <optional>

namespace modTLRegistry {

namespace {

using SettingValues::NumberOr;
using SettingValues::WholeNumber;

QString stored(const QString& valueName) {
    return GetRegistryValue(RegistryRoot::CurrentUser, kTavloKey, valueName);
}

void store(const QString& valueName, const QString& value) {
    SetRegistryValue(RegistryRoot::CurrentUser, kTavloKey, valueName, value);
}

// A check box holds 0 or 1; a stored number other than 0 checks it.
void setChecked(QCheckBox* box, double value) {
    box->setChecked(value != 0.0);
}

QString checkText(const QCheckBox* box) {
    return box->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
}

std::optional<std::int32_t> selectedLocation(const frmTLSettings& form) {
    const int index = form.cboLocation->currentIndex();
    if (index < 0)
        return std::nullopt;
    return form.cboLocation->itemData(index).toInt();
}

void loadControls(frmTLSettings& form) {
    if (const QString text = stored(QStringLiteral("WebAddress")); !text.isEmpty())
        form.txtWebAddress->setText(text);
    if (const QString text = stored(QStringLiteral("ChatServer")); !text.isEmpty())
        form.txtChatServer->setText(text);

    setChecked(form.chkAutoLogin, Regional::Val(stored(QStringLiteral("AutoLogin"))));
    setChecked(form.chkAutoStartApp, Regional::Val(stored(QStringLiteral("AutoStartApp"))));

    for (auto [name, box] :
         {std::pair{QStringLiteral("AutoStatusIn"), form.chkAutoStatusIn},
          std::pair{QStringLiteral("EnableChat"), form.chkEnableChat},
          std::pair{QStringLiteral("AutoDetectActivity"), form.chkAutoDetectActivity}}) {
        const QString text = stored(name);
        setChecked(box, text.isEmpty() ? 1.0 : Regional::Val(text));
    }

    form.txtUserName->setText(stored(QStringLiteral("UserName")));
    form.txtPassword->setText(stored(QStringLiteral("Password"))); // enciphered

    form.txtMaxColumns->setText(NumberOr(stored(QStringLiteral("MaxColumns")), 5));
    form.SetExitShutdown(SettingValues::Flag(stored(QStringLiteral("ExitShutdown")), false));
    form.txtRefreshInterval->setText(NumberOr(stored(QStringLiteral("RefreshInterval")), 180));
    form.txtIdleTime->setText(NumberOr(stored(QStringLiteral("IdleTime")), 15));

    if (Regional::Val(stored(QStringLiteral("ViewChoice"))) == 1.0)
        form.optStandardView->setChecked(true);
    else
        form.optMiniView->setChecked(true);
}

void copyLoadedControls(const frmTLSettings& form, TLSettings& settings) {
    settings.SetWebAddress(form.txtWebAddress->text());
    settings.SetChatServer(form.txtChatServer->text());
    settings.AutoLogin = form.chkAutoLogin->isChecked();
    settings.EnableChat = form.chkEnableChat->isChecked();
    settings.AutoStartApp = form.chkAutoStartApp->isChecked();
    settings.AutoStatusIn = form.chkAutoStatusIn->isChecked();
    settings.AutoDetectActivity = form.chkAutoDetectActivity->isChecked();
    settings.UserName = form.txtUserName->text();
    settings.Password = TLMain().Functions().EncodeDecode(form.txtPassword->text()); // plain
    settings.SetMaxColumns(WholeNumber(form.txtMaxColumns->text()));
    settings.ExitShutdown = form.ExitShutdown();
    settings.RefreshInterval = WholeNumber(form.txtRefreshInterval->text());
    settings.IdleTime = WholeNumber(form.txtIdleTime->text());
    settings.ViewChoice = form.optStandardView->isChecked() ? 1 : 2;
}

void storeControls(const frmTLSettings& form) {
    store(QStringLiteral("WebAddress"), form.txtWebAddress->text());
    store(QStringLiteral("ChatServer"), form.txtChatServer->text());
    store(QStringLiteral("AutoLogin"), checkText(form.chkAutoLogin));
    store(QStringLiteral("EnableChat"), checkText(form.chkEnableChat));
    store(QStringLiteral("AutoStartApp"), checkText(form.chkAutoStartApp));
    // Needs the right to change the machine's settings; a refusal passes unnoticed.
    if (form.chkAutoStartApp->isChecked())
        AutoStart::Add();
    else
        AutoStart::Remove();
    store(QStringLiteral("AutoStatusIn"), checkText(form.chkAutoStatusIn));
    store(QStringLiteral("AutoDetectActivity"), checkText(form.chkAutoDetectActivity));
    store(QStringLiteral("UserName"), form.txtUserName->text());
    store(QStringLiteral("Password"), form.txtPassword->text()); // enciphered by the callers
    store(QStringLiteral("MaxColumns"), form.txtMaxColumns->text());
    store(QStringLiteral("ExitShutdown"), SettingValues::FlagText(form.ExitShutdown()));
    store(QStringLiteral("RefreshInterval"), form.txtRefreshInterval->text());
    store(QStringLiteral("IdleTime"), form.txtIdleTime->text());
    if (const auto location = selectedLocation(form))
        store(QStringLiteral("OrganizationLocationSys"), QString::number(*location));
    store(QStringLiteral("ViewChoice"),
          form.optStandardView->isChecked() ? QStringLiteral("1") : QStringLiteral("2"));
}

// EnableChat stays as it was: a change of it works only after a restart. The password goes
// over as it stands, enciphered, unlike after a load.
void copySavedControls(const frmTLSettings& form, TLSettings& settings) {
    settings.SetWebAddress(form.txtWebAddress->text());
    settings.SetChatServer(form.txtChatServer->text());
    settings.AutoLogin = form.chkAutoLogin->isChecked();
    settings.AutoStartApp = form.chkAutoStartApp->isChecked();
    settings.AutoStatusIn = form.chkAutoStatusIn->isChecked();
    settings.AutoDetectActivity = form.chkAutoDetectActivity->isChecked();
    settings.UserName = form.txtUserName->text();
    settings.Password = form.txtPassword->text();
    settings.SetMaxColumns(WholeNumber(form.txtMaxColumns->text()));
    settings.ViewChoice = form.optStandardView->isChecked() ? 1 : 2;
    settings.ExitShutdown = form.ExitShutdown();
    settings.RefreshInterval = WholeNumber(form.txtRefreshInterval->text());
    settings.IdleTime = WholeNumber(form.txtIdleTime->text());
    if (const auto location = selectedLocation(form))
        settings.SetOrganizationLocationSys(*location);
}

} // namespace

QString GetRegistryValue(RegistryRoot root, const QString& keyPath, const QString& valueName) {
    const QString text = SettingsStore::ReadText(root, keyPath, valueName).value_or(QString());
    const qsizetype end = text.indexOf(QChar(u'\0'));
    return end < 0 ? text : text.left(end);
}

void SetRegistryValue(RegistryRoot root, const QString& keyPath, const QString& valueName,
                      const QString& value) {
    SettingsStore::WriteText(root, keyPath, valueName, value);
}

void LoadSettings() {
    auto& form = Form<frmTLSettings>(); // the first touch loads it, which loads the settings too
    loadControls(form);
    auto& settings = TLMain().Settings();
    settings.SetOrganizationLocationSys(
        WholeNumber(stored(QStringLiteral("OrganizationLocationSys"))));
    copyLoadedControls(form, settings);
}

void SaveSettings() {
    auto& form = Form<frmTLSettings>();
    SettingsStore::CreateKey(RegistryRoot::CurrentUser, kNorvaneKey);
    SettingsStore::CreateKey(RegistryRoot::CurrentUser, kTavloKey);
    storeControls(form);
    copySavedControls(form, TLMain().Settings());
}

} // namespace modTLRegistry
