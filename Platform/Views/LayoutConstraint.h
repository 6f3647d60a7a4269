#pragma once

#include <QWidget>

namespace velloren {

/// Fixes the height of a view. It belongs to the view; a constraint of 0 collapses the view, which then takes
/// no part in focus and accessibility either. Main thread only.
class LayoutConstraint final : public QObject {
  public:
    explicit LayoutConstraint(QWidget& view) : QObject(&view), view(view), height(view.minimumHeight()) {}

    /// In device-independent pixels.
    [[nodiscard]] double constant() const { return height; }

    void setConstant(double points) {
        height = points;
        view.setFixedHeight(qRound(points));
        view.setVisible(points > 0);
    }

  private:
    QWidget& view;
    double height;
};

} // namespace velloren
