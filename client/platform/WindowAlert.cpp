#include "WindowAlert.h"

#include <QWindow>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

std::function<void(QWindow*)>& hook() {
    static std::function<void(QWindow*)> replacement;
    return replacement;
}

#ifdef Q_OS_WIN
// Caption and task bar button, five times; looked up at run time like any optional call.
void flashFiveTimes(QWindow* window) {
    HMODULE user32 = LoadLibraryA("user32");
    if (!user32)
        return;
    using FlashFn = BOOL(WINAPI*)(PFLASHWINFO);
    auto flash = reinterpret_cast<FlashFn>(GetProcAddress(user32, "FlashWindowEx"));
    if (flash) {
        FLASHWINFO info{sizeof(FLASHWINFO), reinterpret_cast<HWND>(window->winId()),
                        FLASHW_ALL | FLASHW_TIMER, 5, 0};
        flash(&info);
    }
    FreeLibrary(user32);
}
#endif

} // namespace

namespace WindowAlert {

void Flash(QWindow* window) {
    if (!window)
        return;
    if (hook()) {
        hook()(window);
        return;
    }
#ifdef Q_OS_WIN
    flashFiveTimes(window);
#else
    window->alert(0); // until the user looks: the desktop decides how often it blinks
#endif
}

void SetFlashHook(std::function<void(QWindow*)> replacement) {
    hook() = std::move(replacement);
}

} // namespace WindowAlert
