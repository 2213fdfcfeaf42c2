#pragma once

#include <QPoint>
#include <QString>
#include <memory>

class ActivitySource;
class QTimer;

// The idle watch: a person who is In and leaves the keyboard and mouse alone for IdleTime
// minutes is made Unavailable with the comment "User is idle", and made In again as soon as
// the pointer moves sideways. Keys only keep a person from going idle; they never bring one
// back. The comment is the only mark of an automatic change.
namespace modTLMouseActivity {

inline const QString kIdleComment = QStringLiteral("User is idle");

// What the watch keeps for the whole run.
struct State {
    QPoint CursorPos;            // the pointer at the latest tick
    QPoint PrevPos;              // the pointer at the tick before
    double IdleMilliseconds = 0; // quiet time so far, counted in ticks
    double IdleMinutes = 0;      // the same in minutes
};
State& Current();

// Gives the timer its one-second interval, starts it and forgets the previous position.
void StartTimer(QTimer& timer);

// One tick of the watch; intervalMs is what each quiet tick adds. Failures are reported and
// end the tick.
void Tick(int intervalMs);

// Where activity is read from: made for this desktop at first use, or replaced (tests).
ActivitySource& Source();
void SetSource(std::unique_ptr<ActivitySource> source);

} // namespace modTLMouseActivity
