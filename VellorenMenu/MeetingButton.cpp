#include "VellorenMenu/MeetingButton.h"

#include "VellorenMenu/Colors.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>

namespace velloren {

namespace {

constexpr int titleMargin = 12;
constexpr int bezelHeight = 24;
constexpr double bezelRadius = 6;

QColor bezelColor(const QPushButton& button) {
    if (button.isDown())
        return colors::bezelPressedFill;
    return button.underMouse() ? colors::bezelHoverFill : colors::bezelFill;
}

} // namespace

MeetingButton::MeetingButton(QWidget* parent) : QPushButton(parent), color(colors::buttonTitleGrey) {
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus);
}

void MeetingButton::setPixelSize(int size) {
    QFont changed = font();
    changed.setPixelSize(size);
    setFont(changed);
}

void MeetingButton::awakeFromNib() {
    styledTitle = AttributedTitle{text(), color, font(), Qt::AlignHCenter | Qt::AlignVCenter};
}

QSize MeetingButton::sizeHint() const {
    return {fontMetrics().horizontalAdvance(text()) + 2 * titleMargin, bezelHeight};
}

void MeetingButton::paintEvent(QPaintEvent* event) {
    if (!styledTitle) {
        QPushButton::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(hasFocus() ? colors::focusBlue : colors::bezelRim, hasFocus() ? 2 : 1));
    painter.setBrush(bezelColor(*this));
    const double inset = hasFocus() ? 1 : 0.5;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), bezelRadius, bezelRadius);
    painter.setPen(styledTitle->foregroundColor);
    painter.setFont(styledTitle->font);
    painter.drawText(rect(), int(styledTitle->alignment), styledTitle->text);
}

} // namespace velloren
