#pragma once

#include <vector>

namespace velloren {

/// Something that Fabric starts. Main thread only.
class Kit {
  public:
    Kit() = default;
    Kit(const Kit&) = delete;
    Kit& operator=(const Kit&) = delete;
    virtual ~Kit() = default;

    virtual void start() = 0;
};

/// What the crash reporting comes in.
class Fabric {
  public:
    /// Starts the kits, in order.
    static void with(const std::vector<Kit*>& kits) {
        for (Kit* kit : kits)
            kit->start();
    }
};

} // namespace velloren
