#pragma once

#include <QPoint>
#include <QRect>

#include <optional>

/// What can be seen of the desktop's bars on an X display. Places and sizes are the display's own pixels.
/// Main thread only; without an X display everything is absent.
namespace velloren::x11 {

/// The window at `place` that says it is a bar (a dock). None where there is none, and on desktops whose
/// compositor draws the bar itself.
[[nodiscard]] std::optional<QRect> barAt(QPoint place);

/// The stretch of `bar` around `place` on which something is drawn, as wide or high as the bar: an icon and
/// the highlight behind it. None where it cannot be told apart from the bar's ground or from what is beside
/// it.
[[nodiscard]] std::optional<QRect> drawnAround(const QRect& bar, QPoint place);

} // namespace velloren::x11
