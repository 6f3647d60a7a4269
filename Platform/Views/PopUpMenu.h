#pragma once

#include <QMenu>

namespace velloren {

/// A menu that looks like the popover that it drops from: white, rounded, with the same shadow. The shadow is
/// part of the menu's window, as wide as its contents margins; where the display does not blend windows the
/// menu is a plain rectangle, which is decided at each showing. Main thread only.
class PopUpMenu final : public QMenu {
    Q_OBJECT

  public:
    explicit PopUpMenu(QWidget* parent = nullptr);

    void setVisible(bool visible) override;

  protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    /// What looks like the menu.
    [[nodiscard]] QRect panel() const { return rect().marginsRemoved(contentsMargins()); }

    bool composited = true;
    double pixelsPerPoint = 0; ///< of the screen at the latest showing
};

} // namespace velloren
