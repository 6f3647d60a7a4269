#include "Platform/Views/PopoverPlacement.h"

#include <algorithm>

namespace velloren {

namespace {

ArrowEdge edgeTowards(const PopoverSite& site) {
    const auto& [anchor, screen, available, kind] = site;
    const QPoint centre = anchor.center();
    if (centre.y() < available.top())
        return ArrowEdge::Top;
    if (centre.y() > available.bottom())
        return ArrowEdge::Bottom;
    if (centre.x() < available.left())
        return ArrowEdge::Left;
    if (centre.x() > available.right())
        return ArrowEdge::Right;
    return centre.y() <= screen.center().y() ? ArrowEdge::Top : ArrowEdge::Bottom;
}

bool isHorizontal(ArrowEdge edge) {
    return edge == ArrowEdge::Top || edge == ArrowEdge::Bottom;
}

/// The start of a stretch of `length` centred on `centre` and kept within [first, last] less the gap, from
/// its beginning when it does not fit.
int centredWithin(int centre, int length, int first, int last) {
    constexpr int gap = PopoverMetrics::screenGap;
    return std::max(first + gap, std::min(centre - length / 2, last - gap - length + 1));
}

int tipWithin(int tip, int length) {
    return std::clamp(tip, 1, length - 1);
}

} // namespace

PopoverPlacement placePopover(const PopoverSite& site, QSize content) {
    const QRect& anchor = site.anchor;
    const QRect& available = site.available;
    const ArrowEdge edge = edgeTowards(site);
    const QPoint centre = anchor.center();
    const bool horizontal = isHorizontal(edge);
    const int arrow = site.kind == PopoverSite::Anchor::Icon ? PopoverMetrics::arrowLength : 0;
    QRect frame({}, content + (horizontal ? QSize(0, arrow) : QSize(arrow, 0)));

    if (horizontal)
        frame.moveLeft(centredWithin(centre.x(), frame.width(), available.left(), available.right()));
    else
        frame.moveTop(centredWithin(centre.y(), frame.height(), available.top(), available.bottom()));

    switch (edge) {
    case ArrowEdge::Top:
        frame.moveTop(std::max(anchor.bottom() + 1, available.top()));
        break;
    case ArrowEdge::Bottom:
        frame.moveBottom(std::min(anchor.top() - 1, available.bottom()));
        break;
    case ArrowEdge::Left:
        frame.moveLeft(std::max(anchor.right() + 1, available.left()));
        break;
    case ArrowEdge::Right:
        frame.moveRight(std::min(anchor.left() - 1, available.right()));
        break;
    }

    if (arrow == 0)
        return {frame, std::nullopt, 0};
    const int tip = horizontal ? tipWithin(centre.x() - frame.left(), frame.width())
                               : tipWithin(centre.y() - frame.top(), frame.height());
    return {frame, edge, tip};
}

} // namespace velloren
