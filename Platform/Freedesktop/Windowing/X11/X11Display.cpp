#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QGuiApplication>
#include <QWidget>
#include <xcb/xcb.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

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

bool isWithinWayland() {
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

namespace {

void setNumbers(const QWidget& window, std::string_view property, const std::vector<std::uint32_t>& numbers) {
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, xcb_window_t(window.winId()),
                        atomNamed(property), XCB_ATOM_CARDINAL, 32, std::uint32_t(numbers.size()),
                        numbers.data());
}

} // namespace

void leaveOutShadow(const QWidget& window) {
    setNumbers(window, "_GTK_FRAME_EXTENTS", {1, 1, 1, 1}); // some on each side
}

void setAnimates(const QWidget& window, bool animates) {
    setNumbers(window, "_KDE_NET_WM_SKIP_CLOSE_ANIMATION", {animates ? 0U : 1U});
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

QImage imageOf(std::uint32_t window, const QRect& part) {
    if (part.isEmpty())
        return {};
    QImage picture(part.size(), QImage::Format_RGB32);
    const auto shown = owned(xcb_get_image_reply(
        connection(),
        xcb_get_image(connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, std::int16_t(part.x()),
                      std::int16_t(part.y()), std::uint16_t(part.width()), std::uint16_t(part.height()), ~0U),
        nullptr));
    if (!shown || xcb_get_image_data_length(shown.get()) != picture.sizeInBytes())
        return {};
    std::copy_n(xcb_get_image_data(shown.get()), picture.sizeInBytes(), picture.bits());
    return picture;
}

} // namespace velloren::x11
