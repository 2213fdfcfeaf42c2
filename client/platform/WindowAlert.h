#pragma once

#include <functional>

class QWindow;

// Flashes a window's caption and task bar button a few times to say that something arrived,
// without raising it or taking the focus. Where the system has no such call nothing happens.
namespace WindowAlert {

void Flash(QWindow* window);

// Tests see each flash here instead; an empty hook restores the system's own.
void SetFlashHook(std::function<void(QWindow*)> hook);

} // namespace WindowAlert
