#include "VellorenMenu/ItemView.h"

#include "VellorenMenu/Colors.h"

#include <QPainter>

namespace velloren {

ItemView::ItemView(QWidget* parent) : View(parent), backgroundColor(colors::popoverGrey) {}

void ItemView::setBgColor(const QColor& color) {
    backgroundColor = color;
    setNeedsDisplay();
}

void ItemView::setItemHidden(bool hidden) {
    if (heightConstraint)
        heightConstraint->setConstant(hidden ? 0 : viewHeight());
    itemHidden = hidden;
}

void ItemView::drawRect(QPainter& painter, const QRect& dirtyRect) {
    painter.fillRect(dirtyRect, backgroundColor);
    if (drawsHairline)
        painter.fillRect(QRect(0, height() - 1, width(), 1), colors::hairline);
    View::drawRect(painter, dirtyRect);
}

} // namespace velloren
