#pragma once

#include "Tests/Support/VirtualScreen.h"

#include <QRect>

namespace velloren {

enum class Side { Top, Bottom };
enum class Shade { Light, Dark };
enum class Place { OnlyScreen, RightScreen };

/// Where a bar is, and what it is like.
struct Bar {
    Side side = Side::Top;
    Shade shade = Shade::Light;
    int scale = 1; ///< pixels of the screen to one of a picture
    Place place = Place::OnlyScreen;
};

/// One of the desktops that `host` knows, without its bar at first.
class HostDesktop : public VirtualScreen {
  public:
    HostDesktop(std::string name, const Bar& bar);
    ~HostDesktop();

    void startBar();
    /// Kills the bar, as a crash does, and waits until the screen shows none.
    void stopBar();

    /// What programs of this desktop have in their environment beside what this process has.
    [[nodiscard]] Process::Environment programEnvironment() const;

    /// The screen that the bar is on, and of it the part beside the edge that the bar is in, where its tray
    /// is.
    [[nodiscard]] QRect screenArea() const;
    [[nodiscard]] QRect barArea() const;

    /// The screen once it stays as it is, and fulfils the condition; a null picture where that does not come.
    [[nodiscard]] QImage picture(const std::function<bool(const QImage&)>& shows = {}) const;

  private:
    std::unique_ptr<Process> startPart(const std::string& part);

    std::string name;
    Bar bar;
    std::unique_ptr<Process> session;
    std::unique_ptr<Process> barProcess;
    QImage withoutBar;
};

} // namespace velloren
