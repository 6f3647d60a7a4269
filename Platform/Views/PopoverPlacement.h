#pragma once

#include <QRect>

#include <optional>

namespace velloren {

/// The side of the popover's frame that its arrow stands on; quarter turns from the top one.
enum class ArrowEdge { Top, Right, Bottom, Left };

/// What a popover is placed by. Device-independent pixels of the whole desktop.
struct PopoverSite {
    enum class Anchor { Icon, Nearby };

    QRect anchor;    ///< what its arrow points at; one that is only nearby gets none
    QRect screen;    ///< the screen that the anchor is on
    QRect available; ///< what bars leave free of it, as far as that is known
    Anchor kind = Anchor::Icon;
};

/// Where a popover goes. Device-independent pixels of the whole desktop.
struct PopoverPlacement {
    QRect frame;                        ///< the frame view: the content and, on one side, the arrow
    std::optional<ArrowEdge> arrowEdge; ///< the side that faces the anchor; none without an arrow
    int arrowCentre;                    ///< the arrow's tip, from the frame's top left corner along that side

    friend bool operator==(const PopoverPlacement&, const PopoverPlacement&) = default;
};

struct PopoverMetrics {
    static constexpr int arrowLength = 8;
    static constexpr int arrowHalfWidth = 10;
    static constexpr int cornerRadius = 8;
    static constexpr int screenGap = 4; ///< kept between the frame and the sides of the available area
};

/// Places a popover whose content is `content` large beside the site's anchor, inside what is available:
/// below an anchor in a bar at the top of the screen, above one at the bottom, beside one at the left or
/// right. An anchor within the available area counts as in the nearer of the top and the bottom.
[[nodiscard]] PopoverPlacement placePopover(const PopoverSite& site, QSize content);

} // namespace velloren
