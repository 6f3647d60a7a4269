#pragma once

#include "Tests/Support/VirtualScreen.h"

namespace velloren {

struct SwayOptions {
    std::string barSide = "top"; ///< or "bottom", "left", "right"
    std::string configuration{}; ///< more lines of the compositor's
};

/// A Wayland desktop within a virtual screen, whose pointer and keyboard are its own: a compositor that has a
/// layer shell, and a bar with the tray in its middle.
class SwayDesktop : public VirtualScreen {
  public:
    static constexpr int barThickness = 30;

    explicit SwayDesktop(const SwayOptions& options = {});
    ~SwayDesktop();

    /// The tray's icon, as the screen shows it; none while there is none.
    [[nodiscard]] std::optional<QRect> icon() const;
    /// What the popover's bubble covers of the screen, arrow included; none while it is closed.
    [[nodiscard]] std::optional<QRect> popover() const;

  private:
    void startCompositor(const std::string& configuration);
    void startBar(const std::string& side);

    std::unique_ptr<Process> compositor;
    std::unique_ptr<Process> bar;
};

} // namespace velloren
