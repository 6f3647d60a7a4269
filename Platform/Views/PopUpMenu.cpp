#include "Platform/Views/PopUpMenu.h"

#include "Platform/Views/PopoverPlacement.h"
#include "Platform/Views/PopoverSurroundings.h"
#include "Platform/Views/WindowServer.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScreen>

#include <utility>

namespace velloren {

namespace {

constexpr QColor panelColor(255, 255, 255);
constexpr QColor plainRim(209, 209, 209);

constexpr QLatin1String menuStyle(R"(
QMenu { background: transparent; border: none; padding: 4px; font-size: 13px; }
QMenu::item { padding: 4px 16px; color: #1d1d1f; border-radius: 4px; }
QMenu::item:selected { background: #0050ff; color: #ffffff; }
QMenu::separator { height: 1px; margin: 4px 8px; background: rgba(0, 0, 0, 26); }
)");

} // namespace

PopUpMenu::PopUpMenu(QWidget* parent) : QMenu(parent) {
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setContentsMargins(popoverShadowMargin, popoverShadowMargin, popoverShadowMargin, popoverShadowMargin);
    setStyleSheet(menuStyle);
}

void PopUpMenu::setVisible(bool visible) {
    // What Qt paints into is not enlarged with the menu when the scale changes while that is hidden.
    if (visible && !isVisible() &&
        std::exchange(pixelsPerPoint, screen()->devicePixelRatio()) != screen()->devicePixelRatio())
        destroy();
    QMenu::setVisible(visible);
}

void PopUpMenu::showEvent(QShowEvent* event) {
    composited = WindowServer::shared().isComposited();
    composited ? clearMask() : setMask(panel());
    WindowServer::shared().declareShadow(*this);
    QMenu::showEvent(event);
}

void PopUpMenu::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (composited) {
        drawPopoverSurroundings(painter, panel());
        painter.setPen(Qt::NoPen);
        painter.setBrush(panelColor);
        painter.drawRoundedRect(panel(), PopoverMetrics::cornerRadius, PopoverMetrics::cornerRadius);
    } else {
        painter.setPen(plainRim);
        painter.fillRect(panel(), panelColor);
        painter.drawRect(QRectF(panel()).adjusted(0.5, 0.5, -0.5, -0.5));
    }
    painter.end();
    QMenu::paintEvent(event);
}

void PopUpMenu::mousePressEvent(QMouseEvent* event) {
    if (panel().contains(event->position().toPoint()))
        QMenu::mousePressEvent(event);
    else
        close();
}

} // namespace velloren
