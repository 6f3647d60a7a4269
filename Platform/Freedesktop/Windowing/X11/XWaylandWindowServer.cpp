#include "Platform/Freedesktop/Windowing/X11/XWaylandWindowServer.h"

#include "Platform/Freedesktop/Windowing/X11/WindowsAroundPopover.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

namespace velloren {

XWaylandWindowServer::XWaylandWindowServer(OverlayEvents& events) : events(events) {}

XWaylandWindowServer::~XWaylandWindowServer() = default;

void XWaylandWindowServer::setAnimates(QWidget& window, bool animates) {
    x11::setAnimates(window, animates);
}

void XWaylandWindowServer::declareShadow(QWidget& window) {
    x11::leaveOutShadow(window);
}

void XWaylandWindowServer::showPopover(QWidget& window, const QRect& frame) {
    PlainWindowServer::showPopover(window, frame);
    if (!surroundings)
        surroundings = std::make_unique<WindowsAroundPopover>(window, events);
}

bool XWaylandWindowServer::hidePopover(QWidget& window) {
    surroundings.reset();
    return PlainWindowServer::hidePopover(window);
}

} // namespace velloren
