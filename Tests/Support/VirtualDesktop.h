#pragma once

#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/Process.h"

#include <QImage>
#include <QPoint>
#include <QRect>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velloren {

/// A desktop in memory, the test's own: X server, session bus, window manager, and a panel at the top with
/// the tray near its right end. It is what this process's environment names for as long as it lives; the
/// product's folders are fresh ones.
class VirtualDesktop {
  public:
    static constexpr int width = 1280;
    static constexpr int height = 800;
    /// Where the only icon of the tray stands, and a place that is nobody's.
    static constexpr QPoint icon{width - 23, 15};
    static constexpr QPoint elsewhere{300, 500};
    /// From the icon's middle up to the margin around its glyph.
    static constexpr QPoint aboveGlyph{0, 10};

    VirtualDesktop();
    VirtualDesktop(const VirtualDesktop&) = delete;
    VirtualDesktop& operator=(const VirtualDesktop&) = delete;

    [[nodiscard]] PrivateBus& bus() { return *sessionBus; }

    [[nodiscard]] std::filesystem::path folder() const { return sessionBus->folder(); }

    /// Starts the panel and waits until its tray is there.
    void startPanel();
    /// Kills the panel, as a crash does, and waits until its tray is gone.
    void stopPanel();
    [[nodiscard]] bool hasTray() const;
    /// The items in the tray.
    [[nodiscard]] int itemCount() const;

    /// Starts one of the product's programs; its output goes to `folder() / name`.
    std::unique_ptr<Process> start(const std::string& name, const std::vector<std::string>& options = {});

    /// Runs a command to its end. Its exit status; what it printed goes to `output`.
    int run(const std::vector<std::string>& arguments, std::string* output = nullptr) const;

    void moveTo(QPoint place) const;
    /// 1 is the left button, 2 the middle one, 3 the right one.
    void click(QPoint place, int button = 1) const;
    void type(const std::string& key) const;

    /// The window of the popover, shadow included; none while it is closed.
    [[nodiscard]] std::optional<QRect> popover() const;
    /// The menu of the popover; none while it is closed.
    [[nodiscard]] std::optional<QRect> menu() const;
    /// The icon's window in a tray that takes in windows; none while it is in none.
    [[nodiscard]] std::optional<QRect> legacyIcon() const;
    [[nodiscard]] QImage screen() const;
    [[nodiscard]] static bool isHighlight(QColor color);
    /// Whether the icon has the blue of the highlight around it.
    [[nodiscard]] bool iconIsHighlighted() const;

    /// Whether `condition` comes to hold within a generous limit.
    static bool waitUntil(const std::function<bool()>& condition);

  private:
    void startDisplay();
    [[nodiscard]] bool isViewable(const std::string& window) const;
    [[nodiscard]] std::optional<QRect> agentWindow(const std::function<bool(QSize)>& fits) const;

    TemporaryDirectory home;
    std::vector<std::unique_ptr<EnvironmentVariable>> environment;
    std::unique_ptr<Process> display;
    std::unique_ptr<PrivateBus> sessionBus;
    std::unique_ptr<Process> windowManager;
    std::unique_ptr<Process> panel;
};

} // namespace velloren
