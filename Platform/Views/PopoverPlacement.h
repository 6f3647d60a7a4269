#pragma once

#include <QRect>

namespace velloren {

/// The side of the popover's frame that its arrow stands on.
enum class ArrowEdge { Top, Bottom, Left, Right };

/// Where a popover goes. Device-independent pixels of the whole desktop.
struct PopoverPlacement {
    QRect frame;         ///< the frame view: the content and, on one side, the arrow
    ArrowEdge arrowEdge; ///< the side that faces the anchor
    int arrowCentre;     ///< the arrow's tip, from the frame's top left corner along that side

    friend bool operator==(const PopoverPlacement&, const PopoverPlacement&) = default;
};

struct PopoverMetrics {
    static constexpr int arrowLength = 8;
    static constexpr int arrowHalfWidth = 10;
    static constexpr int cornerRadius = 8;
    static constexpr int screenGap = 4; ///< kept between the frame and the sides of the available area
};

/// Places a popover whose content is `content` large beside `anchor`, inside `available`: below an anchor in
/// a bar at the top of `screen`, above one at the bottom, beside one at the left or right. An anchor within
/// `available` counts as in the nearer of the top and the bottom.
[[nodiscard]] PopoverPlacement placePopover(const QRect& anchor, QSize content, const QRect& screen,
                                            const QRect& available);

} // namespace velloren
