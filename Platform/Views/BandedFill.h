#pragma once

class QColor;
class QPainter;
class QPainterPath;

namespace velloren {

/// Fills the path as `QPainter::fillPath` does, a few lines at a time. Qt hands what covers more lines to its
/// pool of threads, and waking those takes many times longer than filling a shape of a window's size.
void fillInBands(QPainter& painter, const QPainterPath& path, const QColor& color);

} // namespace velloren
