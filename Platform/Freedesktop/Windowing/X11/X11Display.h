#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

class QWidget;
struct xcb_connection_t;
struct xcb_screen_t;

/// The X display that Qt is connected to. Main thread only.
namespace velloren::x11 {

/// None when this process shows itself on something else.
[[nodiscard]] xcb_connection_t* connection();

/// Whether the X server, if there is one, is part of a Wayland session (XWayland): its screen then shows
/// nothing but the windows of X programs, and it knows of the pointer only while that is over one.
[[nodiscard]] bool isWithinWayland();

/// Its first screen, which holds all its outputs. Only while there is a connection.
[[nodiscard]] const xcb_screen_t& screen();

/// The atom of that name, asked for once; 0 when the server does not answer.
[[nodiscard]] std::uint32_t atomNamed(std::string_view name);

/// Where the pointer is, in the screen's own pixels; none where the server does not tell.
[[nodiscard]] std::optional<QPoint> pointerPlace();

/// What is shown in that part of a window, from the part's own corner; empty where it cannot be told.
[[nodiscard]] QImage imageOf(std::uint32_t window, const QRect& part);

/// The window draws its shadow itself: the desktop is to draw none around it.
void leaveOutShadow(const QWidget& window);

/// Whether the desktop may have the window fade away.
void setAnimates(const QWidget& window, bool animates);

/// Owns a reply of the X server; none when there was none.
template <class Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

} // namespace velloren::x11
