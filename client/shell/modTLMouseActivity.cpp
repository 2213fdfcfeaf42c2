#include "shell/modTLMouseActivity.h"

#include "directory/StatusNumbers.h"
#include "platform/ActivitySource.h"
#include "shell/TLMain.h"
#include "support/modTLErrorManagement.h"
#include <QTimer>

namespace modTLMouseActivity {
namespace {

constexpr int kTickMs = 1000;

std::unique_ptr<ActivitySource>& sourceSlot() {
    static std::unique_ptr<ActivitySource> source;
    return source;
}

// Sets the status first, so the tray rebuilt inside the update already shows it.
void sendOwnStatus(std::int32_t statusSys, const QString& comment) {
    auto& root = TLMain();
    root.ActiveStatus().StatusSys = statusSys;
    root.ActiveContact().UpdateContactStatus(root.ActiveUser().ContactSys(), statusSys,
                                             QStringLiteral("NULL"), QStringLiteral("NULL"),
                                             comment);
}

// The pointer moved sideways: someone is back.
void pointerMoved(State& s) {
    auto& root = TLMain();
    if (root.ActiveUser().ValidUser() && root.DataAccess().ConnectionEnabled &&
        root.Settings().AutoDetectActivity && root.ActiveStatusRow().Comment == kIdleComment)
        sendOwnStatus(kStatusIn, QString());
    s.IdleMilliseconds = 0;
}

// A key held through the tick still adds the interval: the count restarts from one tick.
void pointerStill(State& s, int intervalMs) {
    if (Source().AnyKeyActive())
        s.IdleMilliseconds = 0;
    s.IdleMilliseconds += intervalMs;
}

void goIdleWhenDue(State& s) {
    auto& root = TLMain();
    if (s.IdleMinutes < root.Settings().IdleTime || !root.Settings().AutoDetectActivity ||
        !root.ActiveUser().ValidUser())
        return;
    if (root.ActiveStatus().StatusSys == kStatusIn)
        sendOwnStatus(kStatusUnavailable, kIdleComment);
    s.IdleMilliseconds = 0;
}

} // namespace

State& Current() {
    static State state;
    return state;
}

void StartTimer(QTimer& timer) {
    timer.setInterval(kTickMs);
    timer.start();
    Current().PrevPos = QPoint(0, 0);
}

void Tick(int intervalMs) {
    State& s = Current();
    try {
        s.CursorPos = Source().CursorPos();
        if (s.CursorPos.x() != s.PrevPos.x())
            pointerMoved(s);
        else
            pointerStill(s, intervalMs);
        s.PrevPos = s.CursorPos;
        s.IdleMinutes = s.IdleMilliseconds / 1000.0 / 60.0;
        goIdleWhenDue(s);
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLMain:errtmrMouseActivityError"));
    }
}

ActivitySource& Source() {
    auto& source = sourceSlot();
    if (!source)
        source = MakeActivitySource();
    return *source;
}

void SetSource(std::unique_ptr<ActivitySource> source) {
    sourceSlot() = std::move(source);
}

} // namespace modTLMouseActivity
