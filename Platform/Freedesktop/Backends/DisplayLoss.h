#pragma once

#include <functional>

namespace velloren {

/// Qt ends the process at once, and with whichever status, when the connection to its display breaks. While
/// this lives, `lost` is called before that, from any thread, and the status is 1. One per process, which
/// lives shorter than Qt's application object.
class DisplayLoss final {
  public:
    explicit DisplayLoss(std::function<void()> lost);
    DisplayLoss(const DisplayLoss&) = delete;
    DisplayLoss& operator=(const DisplayLoss&) = delete;
    ~DisplayLoss();
};

} // namespace velloren
