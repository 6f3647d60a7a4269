#pragma once

#include "Platform/Views/RectEdge.h"

#include <QMenu>
#include <QPointer>

class QRect;
class QWidget;

namespace velloren {

/// Runs a menu from a button. Main thread only.
class PopUpButtonCell {
  public:
    /// Whether the menu drops down from the button; its first item is then the button's title, which the menu
    /// does not show.
    void setPullsDown(bool pullsDown) { dropsDown = pullsDown; }

    /// The button's lower or upper edge, which the menu appears at while there is room for it on the screen.
    void setPreferredEdge(RectEdge preferredEdge) { edge = preferredEdge; }

    /// Borrowed; none runs nothing.
    void setMenu(QMenu* menu) { shownMenu = menu; }

    /// Shows the menu at `frame`, in the coordinates of `view`, and returns when it is dismissed. What the
    /// user chose has been done by then.
    void performClickWithFrame(const QRect& frame, QWidget& view);

  private:
    QPointer<QMenu> shownMenu;
    RectEdge edge = RectEdge::MaxY;
    bool dropsDown = false;
};

} // namespace velloren
