#pragma once

#include <QDateTime>

// "Now" for the whole program. Tests pin it; otherwise it is the local clock.
namespace Clock {
QDateTime Now();
QDate Today();
void SetFixed(const QDateTime& moment); // tests
void Release();                         // back to the real clock
} // namespace Clock
