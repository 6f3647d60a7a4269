#pragma once

#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/Process.h"

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QRect>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velloren {

/// How many screens of `VirtualScreen`'s size the X server has.
enum class Screens { One, TwoSideBySide };

/// An X server in memory and a session bus, the test's own. They are what this process's environment names
/// for as long as this lives; the product's folders are fresh ones.
class VirtualScreen {
  public:
    static constexpr int width = 1280;
    static constexpr int height = 800;

    explicit VirtualScreen(Screens screens = Screens::One);
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

    [[nodiscard]] PrivateBus& bus() const { return *sessionBus; }

    [[nodiscard]] std::filesystem::path folder() const { return sessionBus->folder(); }

    /// Starts one of the product's programs; its output goes to `folder() / name`.
    std::unique_ptr<Process> start(const std::string& name, const std::vector<std::string>& options = {},
                                   const Process::Environment& changes = {});

    /// Runs a command to its end. Its exit status; what it printed goes to `output`.
    int run(const std::vector<std::string>& arguments, std::string* output = nullptr) const;

    void moveTo(QPoint place) const;
    /// 1 is the left button, 2 the middle one, 3 the right one.
    void click(QPoint place, int button = 1) const;
    void type(const std::string& key) const;

    [[nodiscard]] QImage screen() const;

    /// Signals the X server, which answers nobody between SIGSTOP and SIGCONT.
    void signalDisplay(int number) const { display->signal(number); }

    /// Whether `condition` comes to hold within the limit, by itself a generous one.
    static bool waitUntil(const std::function<bool()>& condition,
                          std::chrono::seconds limit = std::chrono::seconds(60));

  protected:
    /// Waits for a part of the desktop; where it does not come, what `part` printed is the reason.
    static void require(const std::function<bool()>& isThere, const char* what, const Process& part);
    void setVariable(const char* name, const std::optional<std::string>& value);

    TemporaryDirectory home;

  private:
    void startDisplay(Screens screens);

    std::vector<std::unique_ptr<EnvironmentVariable>> environment;
    std::unique_ptr<Process> display;
    std::unique_ptr<PrivateBus> sessionBus;
};

} // namespace velloren
