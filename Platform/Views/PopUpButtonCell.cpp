#include "Platform/Views/PopUpButtonCell.h"

#include <QScreen>

namespace velloren {

namespace {

/// Below the frame or above it, as preferred; above where there is no room below.
QPoint menuCorner(const QRect& frame, QSize menu, RectEdge edge, const QRect& screen) {
    const bool fits = frame.left() + menu.width() <= screen.right();
    const int below = frame.bottom() + 1;
    const bool hangs = edge == RectEdge::MinY && below + menu.height() <= screen.bottom();
    return {fits ? frame.left() : frame.right() + 1 - menu.width(),
            hangs ? below : frame.top() - menu.height()};
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
