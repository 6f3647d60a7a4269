#pragma once

namespace velloren {

/// The horizontal edges of a rectangle whose y axis points up: `MinY` is the lower one.
enum class RectEdge { MinY = 1, MaxY = 3 };

} // namespace velloren
