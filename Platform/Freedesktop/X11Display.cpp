#include "Platform/Freedesktop/X11Display.h"

#include <QGuiApplication>
#include <xcb/xcb.h>

#include <string_view>

namespace velloren::x11 {

namespace {

xcb_atom_t atomNamed(std::string_view name) {
    const auto cookie = xcb_intern_atom(connection(), false, std::uint16_t(name.size()), name.data());
    const auto reply = owned(xcb_intern_atom_reply(connection(), cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace

xcb_connection_t* connection() {
    const auto* application = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return application ? application->connection() : nullptr;
}

bool isComposited() {
    if (!connection())
        return true;
    static const xcb_atom_t selection = atomNamed("_NET_WM_CM_S0");
    const auto reply = owned(xcb_get_selection_owner_reply(
        connection(), xcb_get_selection_owner(connection(), selection), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

} // namespace velloren::x11
