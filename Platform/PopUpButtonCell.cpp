#include "Platform/PopUpButtonCell.h"

namespace velloren {

namespace {

QPoint menuCorner(const QRect& frame, QSize menu, RectEdge edge) {
    switch (edge) {
    case RectEdge::MinX:
        return {frame.left() - menu.width(), frame.top()};
    case RectEdge::MinY:
        return {frame.left(), frame.bottom() + 1};
    case RectEdge::MaxX:
        return {frame.right() + 1, frame.top()};
    case RectEdge::MaxY:
        return {frame.left(), frame.top() - menu.height()};
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
    shownMenu->exec(menuCorner(onScreen, shownMenu->sizeHint(), edge));
}

} // namespace velloren
