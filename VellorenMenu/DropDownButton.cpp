#include "VellorenMenu/DropDownButton.h"

#include "Platform/Views/Image.h"
#include "Platform/Views/PopUpMenu.h"
#include "Platform/Views/WindowServer.h"
#include "VellorenMenu/ActionItems.h"
#include "VellorenMenu/Colors.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <QMouseEvent>
#include <QPainter>

namespace velloren {

namespace {

constexpr QSize buttonSize(28, 22);
constexpr double cornerRadius = 5;

/// None for the separator.
void (DropDownButton::*selectorOf(ActionItem item))() {
    switch (item) {
    case ActionItem::Support:
        return &DropDownButton::supportClicked;
    case ActionItem::HelpCenter:
        return &DropDownButton::helpCenterClicked;
    case ActionItem::Separator:
        return nullptr;
    case ActionItem::Quit:
        return &DropDownButton::quitClicked;
    }
    return nullptr;
}

} // namespace

DropDownButton::DropDownButton(QWidget* parent) : QPushButton(parent) {
    popUpButtonCell.setPullsDown(true);
    popUpButtonCell.setPreferredEdge(RectEdge::MinY);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus);
    // Later: the menu keeps the call, and an assistive program waits for its press to be answered.
    connect(this, &QAbstractButton::clicked, this, &DropDownButton::runPopUp, Qt::QueuedConnection);
}

QMenu& DropDownButton::actionMenu() {
    if (!popUpMenu) {
        popUpMenu = new PopUpMenu(this);
        popUpMenu->addAction(QString());
        for (const ActionItem item : actionItems) {
            if (const auto action = selectorOf(item))
                popUpMenu->addAction(QString::fromUtf8(titleOf(item)), this, action);
            else
                popUpMenu->addSeparator();
        }
    }
    return *popUpMenu;
}

QSize DropDownButton::sizeHint() const {
    return buttonSize;
}

void DropDownButton::runPopUp() {
    popUpButtonCell.setMenu(&actionMenu());
    popUpButtonCell.performClickWithFrame(rect(), *this);
    // The menu had the pointer, which may have left the button meanwhile. Displays that do not say where it
    // is say when it enters the next time.
    const auto pointer = WindowServer::shared().pointerLocation();
    setAttribute(Qt::WA_UnderMouse, pointer && rect().contains(mapFromGlobal(*pointer)));
    update();
}

void DropDownButton::supportClicked() {
    perform(ActionItem::Support, [this] { closePopover(*this); });
}

void DropDownButton::helpCenterClicked() {
    perform(ActionItem::HelpCenter, [this] { closePopover(*this); });
}

void DropDownButton::quitClicked() {
    perform(ActionItem::Quit, [this] { closePopover(*this); });
}

void DropDownButton::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        runPopUp();
}

void DropDownButton::mouseReleaseEvent(QMouseEvent*) {}

void DropDownButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse() || (popUpMenu && popUpMenu->isVisible())) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors::hoverGrey);
        painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
    }
    if (const auto image = Image::named(QStringLiteral("actions")))
        image->drawInMiddle(painter, rect());
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors::focusBlue, 2));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), cornerRadius, cornerRadius);
    }
}

} // namespace velloren
