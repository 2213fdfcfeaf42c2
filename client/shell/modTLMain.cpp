#include "shell/modTLMain.h"

#include "base/Forms.h"
#include "base/MsgBox.h"
#include "config/modTLRegistry.h"
#include "notes/TLNotes.h"
#include "platform/SingleInstance.h"
#include "shell/AppVersion.h"
#include "shell/TLMain.h"
#include "shell/frmTLSplash.h"
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

bool anyWindowVisible() {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible())
            return true;
    return false;
}

template <class T> void clearCollection(KeyedCollection<T>& collection) {
    const long count = collection.Count();
    for (long i = 1; i <= count; ++i)
        collection.Remove(1);
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
        // The update prompt itself arrives with the update work; until then say what was found.
        QTextStream(stderr) << "Tavlo: version " << root.LatestVersionReleased
                            << " is published; this is " << AppVersion::Text() << '\n';
    }
    // Until the tray icon keeps the program alive, it lives while a window of it is open.
    if (!anyWindowVisible())
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    return true;
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
