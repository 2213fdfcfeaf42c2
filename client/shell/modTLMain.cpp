#include "shell/modTLMain.h"

#include "base/Forms.h"
#include "base/MsgBox.h"
#include "base/TLError.h"
#include "board/frmTLView.h"
#include "config/modTLRegistry.h"
#include "identity/frmTLLogin.h"
#include "notes/TLNotes.h"
#include "platform/SingleInstance.h"
#include "shell/AppVersion.h"
#include "shell/TLMain.h"
#include "shell/TrayDisplay.h"
#include "shell/TrayPictures.h"
#include "shell/frmTLMain.h"
#include "shell/frmTLSplash.h"
#include "support/modTLErrorManagement.h"
#include "update/frmTLUpdate.h"
#include <QApplication>
#include <QTextStream>
#include <QWidget>
#include <memory>

namespace modTLMain {
namespace {

const QString kWindowTitle = QStringLiteral("Tavlo");

// The first instance keeps its claim for the whole run.
std::unique_ptr<SingleInstance>& runningInstance() {
    static std::unique_ptr<SingleInstance> instance;
    return instance;
}

void raiseWindowTitled(const QString& title) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->windowTitle() != title || !window->isVisible())
            continue;
        window->showNormal();
        window->raise();
        window->activateWindow();
        return;
    }
}

template <class T> void clearCollection(KeyedCollection<T>& collection) {
    collection.Clear();
}

} // namespace

bool ClaimSingleInstance(SingleInstance& instance) {
    if (instance.Claim()) {
        QObject::connect(&instance, &SingleInstance::RaiseRequested, &raiseWindowTitled);
        return true;
    }
    MsgBox(QStringLiteral("Tavlo is already open.  ") + QStringLiteral("\r\r") +
               QStringLiteral("Please check your system tray in the lower right-hand corner."),
           vb::vbInformation);
    instance.AskFirstToRaise(kWindowTitle);
    return false;
}

bool IsNewerVersion(std::int16_t latestMajor, std::int16_t latestMinor, std::int16_t latestRevision,
                    std::int16_t runningMajor, std::int16_t runningMinor,
                    std::int16_t runningRevision) {
    if (latestMajor > runningMajor)
        return true;
    if (latestMajor != runningMajor)
        return false;
    if (latestMinor > runningMinor)
        return true;
    return latestMinor == runningMinor && latestRevision > runningRevision;
}

bool LatestVersionIsNewer() {
    return IsNewerVersion(TLMain().LatestVersionMajor, TLMain().LatestVersionMinor,
                          TLMain().LatestVersionRevision, AppVersion::Major(), AppVersion::Minor(),
                          AppVersion::Revision());
}

bool Main() {
    if (!runningInstance()) {
        auto instance = std::make_unique<SingleInstance>();
        if (!ClaimSingleInstance(*instance))
            return false;
        runningInstance() = std::move(instance);
    }

    modTLRegistry::LoadSettings();
    Form<frmTLSplash>().exec();

    auto& root = TLMain();
    root.Settings().ConnectedNorvaneServer = root.DataAccess().ConnectDB();
    root.LatestVersionReleased = root.DataAccess().CheckLatestVersion();

    if (!root.DataAccess().blnErrored && root.Settings().ConnectedNorvaneServer &&
        root.Settings().NetworkConnected() && LatestVersionIsNewer()) {
        Form<frmTLUpdate>().exec();
        if (ProgramEnding())
            return false;
    }
    if (!root.DataAccess().blnErrored)
        Form<frmTLLogin>().Login(false);
    BuildMenuItems();
    return true;
}

namespace {
bool& endingFlag() {
    static bool ending = false;
    return ending;
}
} // namespace

void EndProgram() {
    endingFlag() = true;
    QCoreApplication::exit(0);
}

bool ProgramEnding() {
    return endingFlag();
}

KeyedCollection<TLStatusRow>& colContacts() {
    static KeyedCollection<TLStatusRow> collection;
    return collection;
}

KeyedCollection<TLNotes>& colNotes() {
    static KeyedCollection<TLNotes> collection;
    return collection;
}

KeyedCollection<TLStatus>& colStatuses() {
    static KeyedCollection<TLStatus> collection;
    return collection;
}

KeyedCollection<TLGroup>& colGroups() {
    static KeyedCollection<TLGroup> collection;
    return collection;
}

void ClearMenuItems() {
    auto& tray = Form<frmTLMain>();
    const std::size_t count = tray.mnuPopOptions.size();
    for (std::size_t i = 1; i < count; ++i)
        tray.UnloadOption(tray.mnuPopOptions.size() - 1);
}

namespace {

void buildStatusEntries(frmTLMain& tray) {
    auto& statuses = colStatuses();
    const QString active = TLMain().ActiveStatus().StatusText;
    for (long i = 1; i <= statuses.Count(); ++i) {
        const auto j = static_cast<std::size_t>(i - 1);
        if (j > 0)
            tray.LoadOption(j);
        tray.mnuPopOptions[j]->setText(statuses[i]->StatusText);
        tray.mnuPopOptions[j]->setChecked(statuses[i]->StatusText == active);
        tray.mnuPopStatus->setEnabled(true);
    }
}

void showTrayState(frmTLMain& tray) {
    auto& root = TLMain();
    const bool valid = root.ActiveUser().ValidUser();
    const QString tip = TrayDisplay::TipText(valid, root.ActiveContact().FullName(),
                                             root.ActiveStatus().StatusText);
    const int picture = TrayDisplay::PictureIndex(valid, root.ActiveStatus().StatusSys,
                                                  root.ActiveContact().NotesUnread);
    tray.SetTrayPictureIndex(picture);
    tray.ChangeSystemTray(tip, TrayPictures::Icon(picture));
}

} // namespace

void BuildMenuItems() {
    try {
        auto& tray = Form<frmTLMain>();
        ClearMenuItems();
        const auto& data = TLMain().DataAccess();
        if (!data.ConnectionEnabled && !data.OnceConnected) {
            tray.EnableMenu(false);
            tray.mnuResetConnection->setEnabled(true);
        } else {
            buildStatusEntries(tray);
            tray.EnableMenu(true);
            tray.mnuResetConnection->setEnabled(false);
        }
        showTrayState(tray);
        ManageApplicationSecurity();
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("BuildMenuItems"));
    }
}

void ManageApplicationSecurity() {
    try {
        auto& root = TLMain();
        auto& tray = Form<frmTLMain>();
        const bool valid = root.ActiveUser().ValidUser();
        if (valid) {
            const bool admin = root.ActiveUser().CheckSecurity(10000000, QString());
            auto& board = Form<frmTLView>();
            board.lblAdmin->setVisible(admin);
            board.mnuAdmin->setVisible(admin);
        }
        tray.mnuSignIn->setEnabled(!valid);
        for (QAction* entry : {tray.mnuSignOut, tray.mnuMiniView, tray.mnuStandardView,
                               tray.mnuPopStatus, tray.mnuLeaveMessage})
            entry->setEnabled(valid);
        tray.mnuSendInstantMessage->setEnabled(valid && root.Settings().EnableChat &&
                                               !root.ActiveOrganization().ChatDisabled);
        if (!valid)
            Guard([] {
                if (auto* board = LoadedForm<frmTLView>())
                    board->hide();
            });
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("ManageApplicationSecurity"));
    }
}

void ClearContacts() {
    clearCollection(colContacts());
}
void ClearStatuses() {
    clearCollection(colStatuses());
}
void ClearGroups() {
    clearCollection(colGroups());
}

} // namespace modTLMain
