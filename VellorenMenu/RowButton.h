#pragma once

#include <QAbstractButton>

namespace velloren {

/// Makes a whole row clickable: it covers the row and shows nothing but the keyboard's focus. Main thread
/// only.
class RowButton final : public QAbstractButton {
    Q_OBJECT

  public:
    using QAbstractButton::QAbstractButton;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace velloren
