#include "OwnWindowsActivitySource.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>

namespace {
// Buttons share the set with keys; key codes never reach this range.
constexpr int kButtonBase = 0x7f000000;
} // namespace

OwnWindowsActivitySource::OwnWindowsActivitySource() {
    if (QCoreApplication::instance())
        QCoreApplication::instance()->installEventFilter(this);
}

OwnWindowsActivitySource::~OwnWindowsActivitySource() {
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeEventFilter(this);
}

bool OwnWindowsActivitySource::AnyKeyActive() {
    const bool active = m_pressed || !m_down.isEmpty();
    m_pressed = false;
    return active;
}

bool OwnWindowsActivitySource::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseMove:
    case QEvent::HoverMove:
        if (auto* mouse = dynamic_cast<QSinglePointEvent*>(event))
            m_position = mouse->globalPosition().toPoint();
        break;
    case QEvent::MouseButtonPress:
        m_pressed = true;
        m_down.insert(kButtonBase + int(static_cast<QMouseEvent*>(event)->button()));
        break;
    case QEvent::MouseButtonRelease:
        m_down.remove(kButtonBase + int(static_cast<QMouseEvent*>(event)->button()));
        break;
    case QEvent::KeyPress:
        m_pressed = true;
        m_down.insert(static_cast<QKeyEvent*>(event)->key());
        break;
    case QEvent::KeyRelease:
        if (!static_cast<QKeyEvent*>(event)->isAutoRepeat())
            m_down.remove(static_cast<QKeyEvent*>(event)->key());
        break;
    case QEvent::ApplicationDeactivate:
        m_down.clear(); // releases elsewhere can't be seen
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
