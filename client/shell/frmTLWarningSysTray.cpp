#include "shell/frmTLWarningSysTray.h"

#include "base/Forms.h"
#include "config/modTLRegistry.h"

namespace {
const QString kDontShowMinimize = QStringLiteral("DontShowMinimize");
}

frmTLWarningSysTray::frmTLWarningSysTray() {
    setupUi(this);
    connect(cmdOk, &QPushButton::clicked, this, &frmTLWarningSysTray::cmdOk_Click);
}

void frmTLWarningSysTray::ShowUnlessDeclined() {
    if (modTLRegistry::GetRegistryValue(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey,
                                        kDontShowMinimize) == QStringLiteral("1"))
        return;
    Form<frmTLWarningSysTray>().show();
}

void frmTLWarningSysTray::cmdOk_Click() {
    if (chkDontShowAgain->isChecked())
        modTLRegistry::SetRegistryValue(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey,
                                        kDontShowMinimize, QStringLiteral("1"));
    Unload<frmTLWarningSysTray>();
}
