#pragma once

#include <QPushButton>

namespace velloren {

/// Makes a whole row clickable: it covers the row and shows nothing but that it is pressed, and the
/// keyboard's focus. Main thread only.
class RowButton final : public QPushButton {
    Q_OBJECT

  public:
    explicit RowButton(QWidget* parent = nullptr) : QPushButton(parent) { setFocusPolicy(Qt::TabFocus); }

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace velloren
