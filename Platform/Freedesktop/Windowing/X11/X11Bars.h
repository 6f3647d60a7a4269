#pragma once

#include <QPoint>
#include <QRect>

#include <optional>
#include <vector>

/// What can be seen of the desktop's bars on an X display. Places and sizes are the display's own pixels.
/// Main thread only; without an X display there is nothing.
namespace velloren::x11 {

/// The window that can be seen at `place` and says it is a bar (a dock). Empty where something else is, and
/// on desktops whose compositor draws the bar itself.
[[nodiscard]] QRect barAt(QPoint place);

/// All such windows, as far as the window manager tells of them.
[[nodiscard]] std::vector<QRect> bars();

/// The stretch of `bar`, which runs that way, around `place` on which something is drawn, as wide or high as
/// the bar: an icon and the highlight behind it. None where it cannot be told apart from the bar's ground or
/// from what is beside it.
[[nodiscard]] std::optional<QRect> drawnAround(const QRect& bar, Qt::Orientation runs, QPoint place);

} // namespace velloren::x11
