#pragma once

#include <chrono>
#include <limits>
#include <string>

namespace velloren {

/// An animation of one property of a layer, from the property's present value to `toValue`.
struct BasicAnimation {
    std::string keyPath;                         ///< "transform.rotation.z" is the one that layers know
    double toValue = 0;                          ///< radians for a rotation
    std::chrono::duration<double> duration{0.0}; ///< of one turn
    double repeatCount = 1;                      ///< may be infinite

    static constexpr double forever = std::numeric_limits<double>::infinity();
};

} // namespace velloren
