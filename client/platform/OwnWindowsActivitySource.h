#pragma once

#include "ActivitySource.h"
#include <QObject>
#include <QPoint>
#include <QSet>

// Activity as the program's own windows see it: pointer motion over them, keys and buttons
// pressed while one of them has the input. Used where the desktop shows no one else's input.
class OwnWindowsActivitySource : public QObject, public ActivitySource {
public:
    // Watches every event of the application from now on.
    OwnWindowsActivitySource();
    ~OwnWindowsActivitySource() override;

    QPoint CursorPos() override { return m_position; }
    bool AnyKeyActive() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPoint m_position;
    QSet<int> m_down; // keys and buttons pressed and not yet released
    bool m_pressed = false;
};
