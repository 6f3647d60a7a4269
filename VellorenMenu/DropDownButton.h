#pragma once

#include "Platform/Views/PopUpButtonCell.h"

#include <QPushButton>

namespace velloren {

/// The small button of the popover that drops down the agent's action menu. Main thread only.
class DropDownButton final : public QPushButton {
    Q_OBJECT

  public:
    explicit DropDownButton(QWidget* parent = nullptr);

    /// Runs the menu; it never shows itself.
    PopUpButtonCell popUpButtonCell;

    /// Made on first use, then kept.
    [[nodiscard]] QMenu& actionMenu();

    [[nodiscard]] QSize sizeHint() const override;

  public Q_SLOTS:
    /// Drops the menu down and returns when it is dismissed.
    void runPopUp();
    void supportClicked();
    void helpCenterClicked();
    void quitClicked();

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QMenu* popUpMenu = nullptr;
};

} // namespace velloren
