#pragma once

#include "platform/ActivitySource.h"
#include <QAbstractNativeEventFilter>
#include <memory>

typedef struct _XDisplay Display;

// Activity on an X11 desktop, read through the program's own X connection: the pointer from
// XQueryPointer, keys and buttons held now from the server's key map and pointer state, and
// presses between two calls from XInput 2 raw events on the root window. Raw events reach the
// program whichever window has the focus, and carry no auto-repeat.
class X11ActivitySource : public ActivitySource, public QAbstractNativeEventFilter {
public:
    // Null unless the program runs on X11 and the server speaks XInput 2.
    static std::unique_ptr<X11ActivitySource> Create();
    ~X11ActivitySource() override;

    QPoint CursorPos() override;
    bool AnyKeyActive() override;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    X11ActivitySource(Display* display, int inputOpcode);
    void selectRawEvents(bool on);
    bool keyHeld() const;
    unsigned int pointerState(QPoint* position) const;

    Display* m_display;
    int m_inputOpcode;
    bool m_pressed = false;
};
