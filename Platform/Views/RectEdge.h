#pragma once

namespace velloren {

/// The edges of a rectangle whose y axis points up: `MinY` is the lower one.
enum class RectEdge { MinX = 0, MinY = 1, MaxX = 2, MaxY = 3 };

} // namespace velloren
