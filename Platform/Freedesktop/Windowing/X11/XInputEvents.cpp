#include "Platform/Freedesktop/Windowing/X11/XInputEvents.h"

#include "Platform/Freedesktop/Windowing/X11/X11Display.h"
#include "Platform/Views/View.h"

#include <QApplication>
#include <QCursor>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <array>

namespace velloren {

namespace {

// A host may tell of a click when its button goes down or when it comes up again; it says so on another
// connection, so the word can come a little after the button's own event.
constexpr std::chrono::milliseconds hostLag{1000};

// A hand moves on meanwhile, but not that far: the word is of another click then, whose own event is still to
// come.
constexpr int farthestWay = 100;

/// Of the buttons that are no wheel's, in their order.
constexpr std::array pressTypes{EventType::LeftMouseDown, EventType::OtherMouseDown,
                                EventType::RightMouseDown};

/// Whether the X server sent what has that number of a request before it knew of the other request.
bool isBefore(std::uint32_t sequence, std::uint32_t other) {
    return std::int32_t(sequence - other) < 0;
}

bool isInOwnWindow(QPoint position) {
    const QWidget* widget = QApplication::widgetAt(position);
    // A window's bare surface is the margin around its frame: it shows what lies behind it.
    return widget && !qobject_cast<const Window*>(widget);
}

} // namespace

XInputEvents::XInputEvents() {
    clickEnd.setSingleShot(true);
    clickEnd.setInterval(hostLag);
    QObject::connect(&clickEnd, &QTimer::timeout, &clickEnd, [this] { setClick(Click::NotSeen); });

    xcb_connection_t* display = x11::connection();
    if (!display)
        return;
    const auto* extension = xcb_get_extension_data(display, &xcb_input_id);
    const auto version = x11::owned(
        xcb_input_xi_query_version_reply(display, xcb_input_xi_query_version(display, 2, 2), nullptr));
    if (!extension || !extension->present || !version)
        return;
    connection = display;
    inputOpcode = extension->major_opcode;
    rootWindow = x11::screen().root;
    qApp->installNativeEventFilter(this);
}

XInputEvents::~XInputEvents() {
    setClick(Click::NotSeen);
}

Subscription XInputEvents::addMonitorForEventsMatchingMask(EventMask mask, Handler handler) {
    if (connection && monitors.empty())
        monitoredFrom = xcb_no_operation(connection).sequence;
    return monitors.add(mask, std::move(handler), [this] { selectWhatIsNeeded(); });
}

bool XInputEvents::takeClickSeenByMonitor() {
    const bool seen =
        click != Click::NotSeen && (QCursor::pos() - clickPlace).manhattanLength() <= farthestWay;
    setClick(Click::NotSeen);
    return seen;
}

bool XInputEvents::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* generic = static_cast<const xcb_ge_generic_event_t*>(message);
    if ((generic->response_type & 0x7f) != XCB_GE_GENERIC || generic->extension != inputOpcode)
        return false;
    const auto* raw = static_cast<const xcb_input_raw_button_press_event_t*>(message);
    if (generic->event_type == XCB_INPUT_RAW_BUTTON_PRESS)
        pressed(raw->detail, generic->full_sequence);
    else if (generic->event_type == XCB_INPUT_RAW_BUTTON_RELEASE)
        released(raw->detail);
    return false;
}

void XInputEvents::pressed(unsigned button, std::uint32_t sequence) {
    setClick(Click::NotSeen);
    const QPoint position = QCursor::pos();
    if (button < 1 || button > pressTypes.size() || isBefore(sequence, monitoredFrom) ||
        isInOwnWindow(position))
        return;

    const Event event{pressTypes[button - 1], position};
    const auto handlers = monitors.handlersFor(maskOf(event.type));
    if (handlers.empty())
        return;
    clickButton = button;
    clickPlace = position;
    setClick(Click::Pressed);
    if (QApplication::activePopupWidget())
        return; // a menu of this process has the pointer: to dismiss it is all that this click does
    for (const Handler& handler : handlers)
        handler(&event);
}

void XInputEvents::released(unsigned button) {
    if (click == Click::Pressed && button == clickButton)
        setClick(Click::Released);
}

void XInputEvents::setClick(Click next) {
    click = next;
    next == Click::Released ? clickEnd.start() : clickEnd.stop();
    selectWhatIsNeeded();
}

void XInputEvents::selectWhatIsNeeded() {
    const std::uint32_t press = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
    const std::uint32_t release = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
    const std::uint32_t needed = monitors.empty() && click == Click::NotSeen ? 0 : press | release;
    if (!connection || needed == selected)
        return;
    selected = needed;

    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, needed};

    xcb_input_xi_select_events(connection, rootWindow, 1, &selection.head);
    xcb_flush(connection);
}

} // namespace velloren
