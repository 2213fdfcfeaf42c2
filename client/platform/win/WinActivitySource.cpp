#include "WinActivitySource.h"

#include <windows.h>

QPoint WinActivitySource::CursorPos() {
    POINT point{};
    GetCursorPos(&point);
    return QPoint(point.x, point.y);
}

// The scan runs through every code even after a hit: each read clears that key's record of
// a press since the previous read.
bool WinActivitySource::AnyKeyActive() {
    bool active = false;
    for (int key = 0; key <= 255; ++key)
        if (GetAsyncKeyState(key) != 0)
            active = true;
    return active;
}
