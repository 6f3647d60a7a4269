#include "Platform/Freedesktop/Windowing/X11/X11Bars.h"

#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QImage>
#include <QTransform>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

namespace velloren::x11 {

namespace {

constexpr int reach = 80;    // pixels to either side of the place that are looked at
constexpr int widestGap = 1; // within an icon

xcb_get_property_cookie_t askForValues(xcb_window_t window, const char* property, xcb_atom_t type) {
    constexpr std::uint32_t limit = 4096; // in units of four bytes
    return xcb_get_property(connection(), false, window, atomNamed(property), type, 0, limit);
}

template <class Value>
std::vector<Value> valuesIn(xcb_get_property_cookie_t question) {
    const auto reply = owned(xcb_get_property_reply(connection(), question, nullptr));
    if (!reply || reply->format != 8 * sizeof(Value))
        return {};
    const auto* first = static_cast<const Value*>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

xcb_translate_coordinates_cookie_t translate(xcb_window_t from, xcb_window_t to, QPoint place) {
    return xcb_translate_coordinates(connection(), from, to, std::int16_t(place.x()),
                                     std::int16_t(place.y()));
}

struct SeenWindow {
    bool isDock;
    QRect place;        ///< on the screen; empty where the window is gone
    xcb_window_t inner; ///< the topmost one inside it at the place looked at; none where there is none
};

/// All is asked at once: waiting for each answer by itself would take as many times as long.
SeenWindow lookAt(xcb_window_t window, QPoint place) {
    const auto askedForTypes = askForValues(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM);
    const auto askedForSize = xcb_get_geometry(connection(), window);
    const auto askedForCorner = translate(window, screen().root, {});
    const auto askedForInner = translate(screen().root, window, place);
    const auto types = valuesIn<xcb_atom_t>(askedForTypes);
    const auto size = owned(xcb_get_geometry_reply(connection(), askedForSize, nullptr));
    const auto corner = owned(xcb_translate_coordinates_reply(connection(), askedForCorner, nullptr));
    const auto inner = owned(xcb_translate_coordinates_reply(connection(), askedForInner, nullptr));
    return {std::find(types.begin(), types.end(), atomNamed("_NET_WM_WINDOW_TYPE_DOCK")) != types.end(),
            size && corner ? QRect(corner->dst_x, corner->dst_y, size->width, size->height) : QRect(),
            inner ? inner->child : xcb_window_t{XCB_WINDOW_NONE}};
}

/// Where along a bar, of which the picture shows a part, is more than its bare ground: than what most places
/// look like, all across it.
std::vector<bool> drawnOn(QImage picture, Qt::Orientation bar) {
    if (bar == Qt::Horizontal)
        picture = picture.transformed(QTransform(0, 1, 1, 0, 0, 0)); // a place is a line then
    picture.convertTo(QImage::Format_RGB888);
    std::vector<QByteArrayView> places;
    std::map<QByteArrayView, int> counts;
    for (int line = 0; line < picture.height(); ++line)
        ++counts[places.emplace_back(picture.constScanLine(line), 3 * picture.width())];
    const auto ground = std::max_element(counts.begin(), counts.end(),
                                         [](const auto& a, const auto& b) { return a.second < b.second; });
    std::vector<bool> drawn;
    drawn.reserve(places.size());
    for (const QByteArrayView place : places)
        drawn.push_back(place != ground->first);
    return drawn;
}

/// What is drawn closest to `start`, at most so far away; `start` where nothing is.
int nearestDrawn(const std::vector<bool>& drawn, int start, int most) {
    for (int away = 0; away <= most; ++away) {
        for (const int here : {start - away, start + away}) {
            if (here >= 0 && here < int(drawn.size()) && drawn[std::size_t(here)])
                return here;
        }
    }
    return start;
}

/// The end of what is drawn, from `start` in steps of `step`.
int endOfDrawn(const std::vector<bool>& drawn, int start, int step) {
    int end = start;
    for (int here = start; here >= 0 && here < int(drawn.size()) && std::abs(here - end) <= widestGap + 1;
         here += step) {
        if (drawn[std::size_t(here)])
            end = here;
    }
    return end;
}

} // namespace

QRect barAt(QPoint place) {
    if (!connection())
        return {};
    SeenWindow seen = lookAt(screen().root, place);
    while (!seen.isDock && seen.inner != XCB_WINDOW_NONE)
        seen = lookAt(seen.inner, place);
    return seen.isDock ? seen.place : QRect();
}

std::vector<QRect> bars() {
    std::vector<QRect> found;
    if (!connection())
        return found;
    const auto windows = askForValues(screen().root, "_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
    for (const xcb_window_t window : valuesIn<xcb_window_t>(windows)) {
        if (const SeenWindow seen = lookAt(window, {}); seen.isDock)
            found.push_back(seen.place);
    }
    return found;
}

std::optional<QRect> drawnAround(const QRect& bar, Qt::Orientation runs, QPoint place) {
    const bool horizontal = runs == Qt::Horizontal;
    const int thickness = horizontal ? bar.height() : bar.width();
    const QMargins around = horizontal ? QMargins(reach, thickness, reach, thickness)
                                       : QMargins(thickness, reach, thickness, reach);
    const QRect part = bar & QRect(place, place).marginsAdded(around) &
                       QRect(0, 0, screen().width_in_pixels, screen().height_in_pixels);
    if (!connection() || part.isEmpty())
        return std::nullopt;
    const auto drawn = drawnOn(imageOf(screen().root, part), runs);
    const int pressed = horizontal ? place.x() - part.x() : place.y() - part.y();
    if (pressed < 0 || pressed >= int(drawn.size()))
        return std::nullopt;

    // Bars leave room around an icon, and not all of them light it up under the pointer, or do so in time.
    const int start = nearestDrawn(drawn, pressed, thickness / 2);
    const int first = endOfDrawn(drawn, start, -1);
    const int last = endOfDrawn(drawn, start, 1);
    const int length = last - first + 1;
    if (length < thickness / 4 || length > 3 * thickness / 2)
        return std::nullopt;
    return horizontal ? QRect(part.x() + first, bar.y(), length, bar.height())
                      : QRect(bar.x(), part.y() + first, bar.width(), length);
}

} // namespace velloren::x11
