#pragma once

#include <QRect>
#include <QSize>
#include <Qt>

namespace velloren {

/// What a screen's bars leave free of it, for somebody who is at `place` on the screen.
///
/// Known is how large that is: `free`. Not known is where: it is guessed that the bar somebody is at is the
/// one that takes what is missing. Where more is missing than one bar is likely to take, and the place is too
/// near the edge for the middle of such a bar, half of it counts as another bar's at the opposite edge. With
/// a place at no bar the whole screen is free. `gap` is what a bar that floats keeps clear around it, before
/// and behind it together, and what `free` does not leave out; a bar that does not float gets it as well.
[[nodiscard]] QRect availableAround(QPoint place, const QRect& screen, QSize free, int gap = 0);

/// Where a status item is likely to be on a screen of which no more is known than that: at the end of the
/// bar, which is taken for one at the top or, where only breadth is missing, at the left. `direction` is that
/// of the session's language.
[[nodiscard]] QPoint likelyPlaceOfIcon(const QRect& screen, QSize free, Qt::LayoutDirection direction);

/// What an arrow points at that belongs to an icon under `place`: as thick as the bar, so that it does not
/// matter where across the bar the place is. In no bar it has `icon`'s size.
[[nodiscard]] QRect anchorAround(QPoint place, QSize icon, const QRect& screen, const QRect& available);

} // namespace velloren
