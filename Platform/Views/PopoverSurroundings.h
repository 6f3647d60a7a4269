#pragma once

class QPainter;
class QRect;

namespace velloren {

/// How far the shadow reaches beyond what casts it, in points.
inline constexpr int popoverShadowMargin = 12;

/// Draws what is around a popover's bubble, its arrow left out: a thin rim, and the soft shadow under a light
/// from above.
void drawPopoverSurroundings(QPainter& painter, const QRect& bubble);

} // namespace velloren
