#include "Platform/Views/BandedFill.h"

#include <QPainter>
#include <QPainterPath>

namespace velloren {

void fillInBands(QPainter& painter, const QPainterPath& path, const QColor& color) {
    constexpr int bandHeight = 3;
    const QRect bounds = path.boundingRect().toAlignedRect();
    painter.save();
    for (int top = bounds.top(); top <= bounds.bottom(); top += bandHeight) {
        painter.setClipRect(QRect(bounds.left(), top, bounds.width(), bandHeight));
        painter.fillPath(path, color);
    }
    painter.restore();
}

} // namespace velloren
