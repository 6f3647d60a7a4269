#pragma once

#include <QColor>
#include <QImage>
#include <QRect>

#include <functional>
#include <optional>

namespace velloren {

/// What encloses the places of `area` that are `wanted`; none where none is.
std::optional<QRect> boundsWithin(QRect area, const std::function<bool(QPoint)>& wanted);

/// What encloses the places of `area` where the pictures differ; none where they are the same.
std::optional<QRect> difference(const QImage& before, const QImage& after, QRect area);

/// How bright it is, from 0 to 1 and linear in light.
double luminance(QColor color);

/// The colour that most of the picture has.
QColor commonColor(const QImage& picture);

/// The contrast ratio, from 1 to 21, of what stands out most in the picture against the colour that most of
/// it has.
double greatestContrast(const QImage& picture);

/// Whether it is the highlight of an icon, which bars blend a little.
bool isHighlight(QColor color);

} // namespace velloren
