#pragma once

#include <QColor>

/// The popover's colours; it is light whatever the desktop's theme.
namespace velloren::colors {

constexpr QColor popoverGrey = QColor(236, 236, 236);
constexpr QColor buttonTitleGrey = QColor(87, 87, 87);
constexpr QColor focusBlue = QColor(0, 80, 255);
constexpr QColor bezelFill = QColor(250, 250, 250);
constexpr QColor bezelHoverFill = QColor(222, 230, 250);
constexpr QColor bezelPressedFill = QColor(190, 206, 246);
constexpr QColor bezelRim = QColor(0, 0, 0, 112);
constexpr QColor pressedGrey = QColor(0, 0, 0, 38);
constexpr QColor hoverGrey = QColor(0, 0, 0, 26);
constexpr QColor hairline = QColor(0, 0, 0, 20);

} // namespace velloren::colors
