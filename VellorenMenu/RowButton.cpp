#include "VellorenMenu/RowButton.h"

#include "VellorenMenu/Colors.h"

#include <QPainter>

namespace velloren {

void RowButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (isDown())
        painter.fillRect(rect(), colors::pressedGrey);
    if (!hasFocus())
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors::focusBlue, 2));
    painter.drawRoundedRect(QRectF(rect()).adjusted(5, 3, -5, -3), 6, 6);
}

} // namespace velloren
