#include "Platform/Freedesktop/Windowing/X11Display.h"

#include <QGuiApplication>
#include <xcb/xcb.h>

#include <map>
#include <string>

namespace velloren::x11 {

std::uint32_t atomNamed(std::string_view name) {
    static std::map<std::string, xcb_atom_t, std::less<>> known;
    if (const auto entry = known.find(name); entry != known.end())
        return entry->second;
    const auto cookie = xcb_intern_atom(connection(), false, std::uint16_t(name.size()), name.data());
    const auto reply = owned(xcb_intern_atom_reply(connection(), cookie, nullptr));
    if (!reply)
        return XCB_ATOM_NONE;
    return known.emplace(name, reply->atom).first->second;
}

xcb_connection_t* connection() {
    const auto* application = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return application ? application->connection() : nullptr;
}

const xcb_screen_t& screen() {
    return *xcb_setup_roots_iterator(xcb_get_setup(connection())).data;
}

std::optional<QPoint> pointerPlace() {
    if (!connection())
        return std::nullopt;
    const auto pointer =
        owned(xcb_query_pointer_reply(connection(), xcb_query_pointer(connection(), screen().root), nullptr));
    return pointer ? std::optional(QPoint(pointer->root_x, pointer->root_y)) : std::nullopt;
}

} // namespace velloren::x11
