#pragma once

// The screen's mouse pointer and event pumping.
namespace Screen {
inline constexpr int vbDefault = 0;
inline constexpr int vbHourglass = 11;
inline constexpr int vbArrowHourglass = 13;
void SetMousePointer(int pointer); // 0 restores the default, 11 busy, 13 arrow with hourglass
int MousePointer();
} // namespace Screen

// Lets pending events run (timers, paints, input) and returns.
void DoEvents();
