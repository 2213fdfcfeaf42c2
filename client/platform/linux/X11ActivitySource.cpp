#include "X11ActivitySource.h"

#include <QAbstractEventDispatcher>
#include <QGuiApplication>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <algorithm>
#include <cstdint>
#include <iterator>

namespace {

// The first bytes every XInput 2 event shares on the wire.
struct GenericEventHead {
    std::uint8_t responseType;
    std::uint8_t extension;
    std::uint16_t sequence;
    std::uint32_t length;
    std::uint16_t eventType;
    std::uint16_t deviceId;
    std::uint32_t time;
    std::uint32_t detail; // the key code or button number
};

constexpr std::uint8_t kGenericEvent = 35;
// Buttons 4 to 7 are the wheel's steps, not presses of a button.
constexpr std::uint32_t kFirstWheelButton = 4;
constexpr std::uint32_t kLastWheelButton = 7;
constexpr unsigned int kAnyButtonMask = Button1Mask | Button2Mask | Button3Mask;

} // namespace

std::unique_ptr<X11ActivitySource> X11ActivitySource::Create() {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    Display* display = x11 ? x11->display() : nullptr;
    if (!display)
        return nullptr;
    int opcode = 0;
    int firstEvent = 0;
    int firstError = 0;
    if (!XQueryExtension(display, "XInputExtension", &opcode, &firstEvent, &firstError))
        return nullptr;
    std::unique_ptr<X11ActivitySource> source(new X11ActivitySource(display, opcode));
    source->selectRawEvents(true);
    if (auto* dispatcher = QAbstractEventDispatcher::instance())
        dispatcher->installNativeEventFilter(source.get());
    return source;
}

X11ActivitySource::X11ActivitySource(Display* display, int inputOpcode)
    : m_display(display), m_inputOpcode(inputOpcode) {}

// After the application has gone, so has its X connection: nothing is left to undo.
X11ActivitySource::~X11ActivitySource() {
    if (!qGuiApp)
        return;
    if (auto* dispatcher = QAbstractEventDispatcher::instance())
        dispatcher->removeNativeEventFilter(this);
    selectRawEvents(false);
}

// The master devices only: the slaves' raw events would count every press twice.
void X11ActivitySource::selectRawEvents(bool on) {
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    if (on) {
        XISetMask(bits, XI_RawKeyPress);
        XISetMask(bits, XI_RawButtonPress);
    }
    XIEventMask mask;
    mask.deviceid = XIAllMasterDevices;
    mask.mask_len = sizeof bits;
    mask.mask = bits;
    XISelectEvents(m_display, DefaultRootWindow(m_display), &mask, 1);
    XFlush(m_display);
}

bool X11ActivitySource::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* head = static_cast<const GenericEventHead*>(message);
    if ((head->responseType & 0x7f) != kGenericEvent || head->extension != m_inputOpcode)
        return false;
    if (head->eventType == XI_RawKeyPress)
        m_pressed = true;
    else if (head->eventType == XI_RawButtonPress &&
             (head->detail < kFirstWheelButton || head->detail > kLastWheelButton))
        m_pressed = true;
    return false; // others may want to see it too
}

unsigned int X11ActivitySource::pointerState(QPoint* position) const {
    Window root = 0;
    Window child = 0;
    int rootX = 0;
    int rootY = 0;
    int windowX = 0;
    int windowY = 0;
    unsigned int mask = 0;
    XQueryPointer(m_display, DefaultRootWindow(m_display), &root, &child, &rootX, &rootY, &windowX,
                  &windowY, &mask);
    if (position)
        *position = QPoint(rootX, rootY);
    return mask;
}

bool X11ActivitySource::keyHeld() const {
    char keys[32] = {};
    XQueryKeymap(m_display, keys);
    return std::any_of(std::begin(keys), std::end(keys), [](char bits) { return bits != 0; });
}

QPoint X11ActivitySource::CursorPos() {
    QPoint position;
    pointerState(&position);
    return position;
}

bool X11ActivitySource::AnyKeyActive() {
    const bool active = m_pressed || (pointerState(nullptr) & kAnyButtonMask) || keyHeld();
    m_pressed = false;
    return active;
}
