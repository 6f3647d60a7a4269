#pragma once

#include <cstdint>

struct xcb_connection_t;

namespace velloren {

/// Clicks and looks at single pixels of the display without a process or a picture in between.
class ScreenProbe {
  public:
    ScreenProbe();
    ScreenProbe(const ScreenProbe&) = delete;
    ScreenProbe& operator=(const ScreenProbe&) = delete;
    ~ScreenProbe();

    void moveTo(int x, int y);
    /// Presses and releases the left button where the pointer is.
    void click();
    /// 0xRRGGBB.
    [[nodiscard]] std::uint32_t colorAt(int x, int y);

  private:
    xcb_connection_t* connection;
    std::uint32_t root;
};

} // namespace velloren
