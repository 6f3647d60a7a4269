#pragma once

#include "Tests/Support/VirtualScreen.h"

namespace velloren {

/// A virtual screen with a window manager, and a panel at the top with the tray near its right end.
class VirtualDesktop : public VirtualScreen {
  public:
    /// Where the only icon of the tray stands, and a place that is nobody's.
    static constexpr QPoint icon{width - 23, 15};
    static constexpr QPoint elsewhere{300, 500};
    /// From the icon's middle up to the margin around its glyph.
    static constexpr QPoint aboveGlyph{0, 10};

    VirtualDesktop();

    /// Starts the panel and waits until its tray is there.
    void startPanel();
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
    [[nodiscard]] static bool isHighlight(QColor color);
    /// Whether the icon has the blue of the highlight around it.
    [[nodiscard]] bool iconIsHighlighted() const;

  private:
    [[nodiscard]] bool isViewable(const std::string& window) const;
    [[nodiscard]] std::optional<QRect> agentWindow(const std::function<bool(QSize)>& fits) const;

    std::unique_ptr<Process> windowManager;
    std::unique_ptr<Process> panel;
};

} // namespace velloren
