#include "Platform/Freedesktop/Backends/DisplayLoss.h"

#include "Platform/Freedesktop/Windowing/QtPrivate.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QtGlobal>
#include <xcb/xcb.h>

#include <cstdlib>
#include <unistd.h>
#include <utility>
#include <wayland-client.h>

namespace velloren {

namespace {

std::function<void()> lostHandler;
QtMessageHandler formerHandler = nullptr;

bool isLost() {
    if (xcb_connection_t* server = x11::connection())
        return xcb_connection_has_error(server) != 0;
    wl_display* compositor = qtprivate::waylandDisplay();
    return compositor && wl_display_get_error(compositor) != 0;
}

/// The last that Qt does before it ends the process is to print why.
void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    formerHandler(type, context, text);
    if (type == QtDebugMsg || type == QtInfoMsg || !isLost())
        return;
    if (const auto handler = std::exchange(lostHandler, nullptr))
        handler();
    ::_exit(EXIT_FAILURE);
}

} // namespace

DisplayLoss::DisplayLoss(std::function<void()> lost) {
    lostHandler = std::move(lost);
    formerHandler = qInstallMessageHandler(&handleMessage);
}

DisplayLoss::~DisplayLoss() {
    qInstallMessageHandler(nullptr);
    lostHandler = nullptr;
}

} // namespace velloren
