#include "frmTLSettings.h"

#include "DeploymentDefaults.h"
#include "SettingValues.h"
#include "base/Forms.h"
#include "base/MsgBox.h"
#include "base/Regional.h"
#include "board/frmTLView.h"
#include "data/TLFunctions.h"
#include "directory/DirectoryLoaders.h"
#include "modTLRegistry.h"
#include "shell/TLMain.h"
#include <QCloseEvent>
#include <QKeyEvent>

namespace {

// A validation: the control's text must be a number, and its whole number must pass the test.
struct Rule {
    const QLineEdit* box;
    QString notNumeric;
    bool (*inRange)(std::int32_t);
    QString outOfRange;
};

} // namespace

frmTLSettings::frmTLSettings(QWidget* parent) : QDialog(parent) {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLSettings"));
    showDefaults();
    chkAutoLogin_Click();
    cboLocation->installEventFilter(this);
    connect(cmdOK, &QPushButton::clicked, this, &frmTLSettings::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmTLSettings::cmdCancel_Click);
    connect(cmdDefaultColumns, &QPushButton::clicked, this,
            &frmTLSettings::cmdDefaultColumns_Click);
    connect(cmdDefaultRefresh, &QPushButton::clicked, this,
            &frmTLSettings::cmdDefaultRefresh_Click);
    connect(chkAutoLogin, &QCheckBox::toggled, this, &frmTLSettings::chkAutoLogin_Click);
}

// What the controls hold before anything is loaded into them; an empty stored address or
// host leaves these in place.
void frmTLSettings::showDefaults() {
    lblWebAddress->setText(QStringLiteral("Enter Server Name or IP Address: (") +
                           DeploymentDefaults::WebAddress + QLatin1Char(')'));
    txtWebAddress->setText(DeploymentDefaults::WebAddress);
    lblChatServer->setText(QStringLiteral("Enter the Chat Server Name or IP Address: (") +
                           DeploymentDefaults::ChatServer + QLatin1Char(')'));
    txtChatServer->setText(DeploymentDefaults::ChatServer);
    txtMaxColumns->setText(QStringLiteral("5"));
    txtRefreshInterval->setText(QStringLiteral("180"));
    txtIdleTime->setText(QStringLiteral("15"));
}

void frmTLSettings::Form_Load() {
    modTLRegistry::LoadSettings();
    loadLocationList();
    TLMain().Functions().ShowOnTop(this, true);
}

// The organization's locations come from the server once a user is signed in. Before that the
// organization is unknown: the list offers "<All>" alone, unselected, so that a save keeps
// the stored choice, and the start-up asks nothing of the server here.
void frmTLSettings::loadLocationList() {
    if (TLMain().ActiveUser().ValidUser()) {
        LoadAvailableLocations(cboLocation);
        return;
    }
    cboLocation->clear();
    cboLocation->addItem(QStringLiteral("<All>"), 0);
    cboLocation->setCurrentIndex(-1);
}

void frmTLSettings::SetExitShutdown(bool value) {
    if (value)
        optExitShutdown->setChecked(true);
    else
        optExitMinimize->setChecked(true);
}

void frmTLSettings::chkAutoLogin_Click() {
    const bool on = chkAutoLogin->isChecked();
    txtUserName->setEnabled(on);
    txtPassword->setEnabled(on);
}

// The location list is a pure pick list: typed characters are dropped, while the keys that
// move between controls or close the dialog keep working.
bool frmTLSettings::eventFilter(QObject* watched, QEvent* event) {
    if (watched == cboLocation && event->type() == QEvent::KeyPress) {
        const QString text = static_cast<QKeyEvent*>(event)->text();
        const bool typed = !text.isEmpty() && text != QLatin1String("\t") &&
                           text != QLatin1String("\r") && text != QLatin1String("\n") &&
                           text != QLatin1String("\x1b");
        if (typed)
            return true;
    }
    return QDialog::eventFilter(watched, event);
}

bool frmTLSettings::entriesAreValid() {
    const Rule rules[] = {
        {txtMaxColumns, QStringLiteral("The Max Columns must be a numeric value."),
         [](std::int32_t n) { return n >= 1 && n <= 10; },
         QStringLiteral("The Max Columns must be a value between 1 and 10.")},
        {txtRefreshInterval, QStringLiteral("The Refresh Interval must be a numeric value."),
         [](std::int32_t n) { return n >= 30; },
         QStringLiteral("The Refresh Interval must be at least 30 seconds.")},
        {txtIdleTime, QStringLiteral("The Idle Time must be a numeric value."),
         [](std::int32_t n) { return n >= 1; },
         QStringLiteral("The Idle time setting must be at least 1 minute.")},
    };
    for (const Rule& rule : rules) {
        if (!SettingValues::IsNumber(rule.box->text())) {
            MsgBox(rule.notNumeric, vb::vbInformation);
            return false;
        }
        if (!rule.inRange(SettingValues::WholeNumber(rule.box->text()))) {
            MsgBox(rule.outOfRange, vb::vbInformation);
            return false;
        }
    }
    return true;
}

void frmTLSettings::cmdOK_Click() {
    auto& functions = TLMain().Functions();
    functions.ShowOnTop(this, false); // message boxes must not hide behind the dialog

    // A text other than the stored one was typed in: encipher it. The stored one already is.
    const QString storedPassword = modTLRegistry::GetRegistryValue(
        RegistryRoot::CurrentUser, modTLRegistry::kTavloKey, QStringLiteral("Password"));
    if (chkAutoLogin->isChecked() && txtPassword->text() != storedPassword)
        txtPassword->setText(functions.EncodeDecode(txtPassword->text()));

    if (!entriesAreValid())
        return;

    if (chkEnableChat->isChecked() && TLMain().ActiveOrganization().ChatDisabled) {
        MsgBox(QStringLiteral("Sorry, chat is currently disabled for your organization."),
               vb::vbInformation);
        chkEnableChat->setChecked(false);
    }

    modTLRegistry::SaveSettings();

    // The count towards the board's next refresh starts over. A board not loaded yet starts
    // from nothing anyway, so it isn't loaded for this.
    if (auto* view = LoadedForm<frmTLView>())
        view->lngRefreshTimerSeconds = 0;

    FormRegistry::instance().unload(this);
}

void frmTLSettings::cmdCancel_Click() {
    FormRegistry::instance().unload(this);
}

void frmTLSettings::reject() {
    cmdCancel_Click();
}

void frmTLSettings::closeEvent(QCloseEvent* event) {
    event->accept();
    FormRegistry::instance().unload(this);
}
