#include "Platform/Freedesktop/Windowing/X11Bars.h"

#include "Platform/Freedesktop/Windowing/X11Display.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace velloren::x11 {

namespace {

constexpr int reach = 80;    // pixels to either side of the place that are looked at
constexpr int widestGap = 1; // within an icon
constexpr std::uint32_t colourBits = 0xffffff;
constexpr std::uint32_t mostTypes = 8; // that a window may say it has

/// What a bar shows at one place along it: its pixels across.
using Slice = std::vector<std::uint32_t>;

bool isBar(xcb_window_t window) {
    const auto types = owned(
        xcb_get_property_reply(connection(),
                               xcb_get_property(connection(), false, window, atomNamed("_NET_WM_WINDOW_TYPE"),
                                                XCB_ATOM_ATOM, 0, mostTypes),
                               nullptr));
    if (!types || types->format != 32)
        return false;
    const std::span atoms(static_cast<const xcb_atom_t*>(xcb_get_property_value(types.get())),
                          types->value_len);
    return std::find(atoms.begin(), atoms.end(), atomNamed("_NET_WM_WINDOW_TYPE_DOCK")) != atoms.end();
}

std::optional<QRect> placeOnScreen(xcb_window_t window) {
    const auto sizeAsked = xcb_get_geometry(connection(), window);
    const auto placeAsked = xcb_translate_coordinates(connection(), window, screen().root, 0, 0);
    const auto size = owned(xcb_get_geometry_reply(connection(), sizeAsked, nullptr));
    const auto place = owned(xcb_translate_coordinates_reply(connection(), placeAsked, nullptr));
    if (!size || !place)
        return std::nullopt;
    return QRect(place->dst_x, place->dst_y, size->width, size->height);
}

/// One slice per pixel along a bar of which `part` is seen; empty when the display does not show its pixels.
std::vector<Slice> slicesOf(const QRect& part, Qt::Orientation bar) {
    const auto shown = owned(xcb_get_image_reply(
        connection(),
        xcb_get_image(connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen().root, std::int16_t(part.x()),
                      std::int16_t(part.y()), std::uint16_t(part.width()), std::uint16_t(part.height()), ~0U),
        nullptr));
    const auto count = std::size_t(part.width()) * std::size_t(part.height());
    if (!shown || std::size_t(xcb_get_image_data_length(shown.get())) != count * sizeof(std::uint32_t))
        return {};
    const auto* pixels = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(shown.get()));
    const bool horizontal = bar == Qt::Horizontal;
    std::vector<Slice> slices(std::size_t(horizontal ? part.width() : part.height()));
    for (std::size_t index = 0; index < count; ++index) {
        const std::size_t column = index % std::size_t(part.width());
        const std::size_t row = index / std::size_t(part.width());
        slices[horizontal ? column : row].push_back(pixels[index] & colourBits);
    }
    return slices;
}

/// Which slices show more than the bar's bare ground, which is what most of them look like.
std::vector<bool> drawnOn(const std::vector<Slice>& slices) {
    std::map<Slice, int> counts;
    for (const Slice& slice : slices)
        ++counts[slice];
    const auto ground = std::max_element(counts.begin(), counts.end(),
                                         [](const auto& a, const auto& b) { return a.second < b.second; });
    std::vector<bool> drawn;
    for (const Slice& slice : slices)
        drawn.push_back(slice != ground->first);
    return drawn;
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

std::optional<QRect> barAt(QPoint place) {
    if (!connection())
        return std::nullopt;
    for (xcb_window_t window = screen().root; window != XCB_WINDOW_NONE;) {
        const auto reply = owned(xcb_translate_coordinates_reply(
            connection(),
            xcb_translate_coordinates(connection(), screen().root, window, std::int16_t(place.x()),
                                      std::int16_t(place.y())),
            nullptr));
        window = reply ? reply->child : xcb_window_t{XCB_WINDOW_NONE};
        if (window != XCB_WINDOW_NONE && isBar(window))
            return placeOnScreen(window);
    }
    return std::nullopt;
}

std::optional<QRect> drawnAround(const QRect& bar, QPoint place) {
    const bool horizontal = bar.width() >= bar.height();
    const int thickness = horizontal ? bar.height() : bar.width();
    const QMargins around = horizontal ? QMargins(reach, thickness, reach, thickness)
                                       : QMargins(thickness, reach, thickness, reach);
    const QRect part = bar & QRect(place, place).marginsAdded(around) &
                       QRect(0, 0, screen().width_in_pixels, screen().height_in_pixels);
    if (!connection() || part.isEmpty())
        return std::nullopt;
    const auto drawn = drawnOn(slicesOf(part, horizontal ? Qt::Horizontal : Qt::Vertical));
    const int start = horizontal ? place.x() - part.x() : place.y() - part.y();
    if (start < 0 || start >= int(drawn.size()))
        return std::nullopt;

    const int first = endOfDrawn(drawn, start, -1);
    const int last = endOfDrawn(drawn, start, 1);
    const int length = last - first + 1;
    if (length < thickness / 4 || length > 3 * thickness / 2)
        return std::nullopt;
    return horizontal ? QRect(part.x() + first, bar.y(), length, bar.height())
                      : QRect(bar.x(), part.y() + first, bar.width(), length);
}

} // namespace velloren::x11
