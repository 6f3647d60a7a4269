#pragma once

#include "Platform/Views/Label.h"
#include "Platform/Views/LayoutConstraint.h"
#include "Platform/Views/View.h"

#include <QColor>
#include <QPointer>

namespace velloren {

/// Base of the rows of the popover's list: a title, a background that the row paints itself, and a height
/// through which it is shown or collapsed. Heights in points. Main thread only.
class ItemView : public View {
    Q_OBJECT
    Q_PROPERTY(QColor bgColor READ bgColor WRITE setBgColor)
    Q_PROPERTY(bool hairline READ hairline WRITE setHairline)

  public:
    explicit ItemView(QWidget* parent = nullptr);

    /// The outlets; each may be missing.
    QPointer<Label> titleLabel;
    QPointer<LayoutConstraint> heightConstraint;

    [[nodiscard]] const QColor& bgColor() const { return backgroundColor; }

    void setBgColor(const QColor& color);

    /// Whether a thin line at the bottom sets the row apart from the next.
    [[nodiscard]] bool hairline() const { return drawsHairline; }

    void setHairline(bool draws) { drawsHairline = draws; }

    /// The height of the shown row.
    [[nodiscard]] virtual double viewHeight() const { return storedViewHeight; }

    void setViewHeight(double height) { storedViewHeight = height; }

    [[nodiscard]] bool isItemHidden() const { return itemHidden; }

    /// Collapses the row, or gives it its height again; without a height constraint only the flag changes.
    void setItemHidden(bool hidden);

    /// Changes the flag alone, for whoever sets the height itself.
    void setItemHiddenFlag(bool hidden) { itemHidden = hidden; }

  protected:
    void drawRect(QPainter& painter, const QRect& dirtyRect) override;

  private:
    QColor backgroundColor;
    double storedViewHeight = 34.0;
    bool itemHidden = false;
    bool drawsHairline = true;
};

} // namespace velloren
