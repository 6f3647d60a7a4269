#pragma once

#include "Tests/Support/HostDesktop.h"

namespace velloren {

/// The desktop that most tests use: Xfce's, with its panel.
class VirtualDesktop : public HostDesktop {
  public:
    /// Where the only icon of the tray stands, and a place that is nobody's.
    static constexpr QPoint icon{width - 23, 16};
    static constexpr QPoint elsewhere{300, 500};
    /// From the icon's middle up to the margin around its glyph.
    static constexpr QPoint aboveGlyph{0, 10};

    VirtualDesktop();

    /// Kills the panel, as a crash does, and waits until its tray is gone.
    void stopPanel();
    [[nodiscard]] bool hasTray() const;
    /// The items in the tray.
    [[nodiscard]] int itemCount() const;

    /// The window of the popover, shadow included; none while it is closed.
    [[nodiscard]] std::optional<QRect> popover() const;
    /// The menu of the popover; none while it is closed.
    [[nodiscard]] std::optional<QRect> menu() const;
    /// The icon's window in a tray that takes in windows; none while it is in none.
    [[nodiscard]] std::optional<QRect> legacyIcon() const;

  private:
    [[nodiscard]] bool isViewable(const std::string& window) const;
    [[nodiscard]] std::optional<QRect> agentWindow(const std::function<bool(QSize)>& fits) const;
};

} // namespace velloren
