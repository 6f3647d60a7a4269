#pragma once

#include <QColor>

/// The popover's colours; it is light whatever the desktop's theme.
namespace velloren::colors {

constexpr QColor popoverGrey = QColor(236, 236, 236);
constexpr QColor buttonTitleGrey = QColor(87, 87, 87);
constexpr QColor focusBlue = QColor(0, 80, 255);
constexpr QColor bezelRim = QColor(0, 0, 0, 46);
constexpr QColor hoverGrey = QColor(0, 0, 0, 26);
constexpr QColor hairline = QColor(0, 0, 0, 20);

} // namespace velloren::colors
