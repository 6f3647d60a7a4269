#pragma once

#include "Tests/Support/VirtualScreen.h"

#include <QTransform>

namespace velloren {

enum class Side { Top, Bottom, Left, Right };
enum class Shade { Light, Dark };

/// Where a bar is, and what it is like.
struct Bar {
    Side side = Side::Top;
    Shade shade = Shade::Light;
    double scale = 1;               ///< pixels of the screen to one of a picture
    Screens screens = Screens::One; ///< of two it is on the right one
};

/// One of the desktops that `host` knows, without its bar at first. Places are those of the bar's screen,
/// turned so that the bar is at the top and the tray near its right end.
class HostDesktop : public VirtualScreen {
  public:
    /// Why this release cannot have it; none where it has to be there.
    static std::optional<std::string> reasonForNone(const std::string& name);

    explicit HostDesktop(std::string name, const Bar& bar = {});
    ~HostDesktop();

    void startBar();
    /// Kills the bar, as a crash does.
    void stopBar();

    /// What programs of this desktop have in their environment beside what this process has.
    [[nodiscard]] Process::Environment programEnvironment() const;

    void pointAt(QPoint place) const { moveTo(onScreen(place)); }

    void press(QPoint place, int button = 1) const { click(onScreen(place), button); }

    /// The bar's screen as it is now.
    [[nodiscard]] QImage look() const;
    /// Once it stays as it is, and fulfils the condition; a null picture where that does not come.
    [[nodiscard]] QImage picture(const std::function<bool(const QImage&)>& shows) const;

    /// A picture, or a part of one, as the screen shows it.
    [[nodiscard]] QImage asShown(const QImage& picture) const { return picture.transformed(turn.inverted()); }

  private:
    std::unique_ptr<Process> startPart(const std::string& part);
    [[nodiscard]] QPoint onScreen(QPoint place) const;

    std::string name;
    Bar bar;
    QTransform turn; ///< from the bar's screen
    std::unique_ptr<Process> session;
    std::unique_ptr<Process> barProcess;
};

} // namespace velloren
