#include "Platform/Freedesktop/Windowing/BarGuess.h"

#include <algorithm>

namespace velloren {

namespace {

constexpr int thickestLoneBar = 56; // bars as thick as that are rarer than two thinner ones

/// How thick a bar is, when somebody in it is `depth` from the screen's edge and `missing` is not free.
int thickness(int depth, int missing) {
    const bool nearerToAnEdgeThanTheMiddle = depth * 8 < missing * 3;
    return missing > thickestLoneBar && nearerToAnEdgeThanTheMiddle ? missing / 2 : missing;
}

} // namespace

QRect availableAround(QPoint place, const QRect& screen, QSize free, int gap) {
    const QSize missing = (screen.size() - free).expandedTo({0, 0});
    const int above = place.y() - screen.top();
    const int below = screen.bottom() - place.y();
    const int left = place.x() - screen.left();
    const int right = screen.right() - place.x();
    const int depthAcross = std::min(above, below);
    const int depthAlong = std::min(left, right);
    const auto isWithin = [gap](int depth, int bar) { return bar > 0 && depth < bar + gap; };
    const bool inHorizontalBar = isWithin(depthAcross, missing.height());
    const bool inVerticalBar = isWithin(depthAlong, missing.width());
    if (inHorizontalBar && (!inVerticalBar || depthAcross <= depthAlong)) {
        const int bar = thickness(depthAcross, missing.height()) + gap;
        return above <= below ? screen.adjusted(0, bar, 0, 0) : screen.adjusted(0, 0, 0, -bar);
    }
    if (inVerticalBar) {
        const int bar = thickness(depthAlong, missing.width()) + gap;
        return left <= right ? screen.adjusted(bar, 0, 0, 0) : screen.adjusted(0, 0, -bar, 0);
    }
    return screen;
}

QPoint likelyPlaceOfIcon(const QRect& screen, QSize free, Qt::LayoutDirection direction) {
    const QSize missing = (screen.size() - free).expandedTo({0, 0});
    const bool atTheLeft = missing.height() == 0 && missing.width() > 0;
    const int bar = atTheLeft ? missing.width() : missing.height();
    const int toMiddle = bar / 2;
    if (atTheLeft)
        return screen.bottomLeft() + QPoint(toMiddle, -toMiddle);
    return direction == Qt::RightToLeft ? screen.topLeft() + QPoint(toMiddle, toMiddle)
                                        : screen.topRight() + QPoint(-toMiddle, toMiddle);
}

QRect anchorAround(QPoint place, QSize icon, const QRect& screen, const QRect& available) {
    QRect anchor({}, icon);
    anchor.moveCenter(place);
    if (available.contains(place))
        return anchor;
    if (available.width() == screen.width()) {
        const bool atTop = place.y() < available.top();
        anchor.setTop(atTop ? screen.top() : available.bottom() + 1);
        anchor.setBottom(atTop ? available.top() - 1 : screen.bottom());
    } else {
        const bool atLeft = place.x() < available.left();
        anchor.setLeft(atLeft ? screen.left() : available.right() + 1);
        anchor.setRight(atLeft ? available.left() - 1 : screen.right());
    }
    return anchor;
}

} // namespace velloren
