#include "Screen.h"

#include <QApplication>
#include <QCoreApplication>
#include <QCursor>

namespace {
int current = Screen::vbDefault;
}

namespace Screen {

void SetMousePointer(int pointer) {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        current = pointer;
        return;
    }
    while (QApplication::overrideCursor())
        QApplication::restoreOverrideCursor();
    current = pointer;
    if (pointer == vbHourglass)
        QApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    else if (pointer == vbArrowHourglass)
        QApplication::setOverrideCursor(QCursor(Qt::BusyCursor));
}

int MousePointer() {
    return current;
}

} // namespace Screen

void DoEvents() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}
