#include "Platform/Views/PopUpButtonCell.h"

#include <QScreen>

namespace velloren {

namespace {

QPoint menuCorner(const QRect& frame, QSize menu, RectEdge edge, const QRect& screen) {
    const bool fits = frame.left() + menu.width() <= screen.right();
    const int left = fits ? frame.left() : frame.right() + 1 - menu.width();
    switch (edge) {
    case RectEdge::MinX:
        return {frame.left() - menu.width(), frame.top()};
    case RectEdge::MinY: {
        const int below = frame.bottom() + 1;
        return {left, below + menu.height() <= screen.bottom() ? below : frame.top() - menu.height()};
    }
    case RectEdge::MaxX:
        return {frame.right() + 1, frame.top()};
    case RectEdge::MaxY:
        return {left, frame.top() - menu.height()};
    }
    return frame.topLeft();
}

} // namespace

void PopUpButtonCell::performClickWithFrame(const QRect& frame, QWidget& view) {
    if (!shownMenu)
        return;
    if (const auto items = shownMenu->actions(); dropsDown && !items.isEmpty())
        items.first()->setVisible(false);
    // The press that dismisses the menu has had its effect: it may be on the button again.
    shownMenu->setAttribute(Qt::WA_NoMouseReplay);
    const QRect onScreen(view.mapToGlobal(frame.topLeft()), frame.size());
    const QMargins shadow = shownMenu->contentsMargins();
    const QSize size = shownMenu->sizeHint().shrunkBy(shadow);
    // With its shadow: Qt moves what reaches over the edge of the screen, and that is onto the button.
    const QRect room = view.screen()->availableGeometry().marginsRemoved(shadow);
    shownMenu->exec(menuCorner(onScreen, size, edge, room) - QPoint(shadow.left(), shadow.top()));
}

} // namespace velloren
