#pragma once

#include <QByteArray>

#include <optional>

namespace velloren {

/// What a session shows programs on, as far as that matters for a popover.
enum class SessionDisplay {
    X11,
    XWayland,   ///< an X server within a Wayland session whose compositor has no layer shell
    LayerShell, ///< a Wayland compositor on which a program can place what belongs to the desktop
    Other       ///< any other one, such as other Wayland compositors: it alone places windows
};

/// The best display of this session; none without any. Asks the compositor, if there is one, and waits for
/// its answer. The user's QT_QPA_PLATFORM holds.
[[nodiscard]] std::optional<SessionDisplay> displayOfSession();

/// Has Qt choose that display for an application object that is made while this lives. Then the environment
/// is as it was: the programs that links open make their own choice.
class DisplayChoice final {
  public:
    explicit DisplayChoice(SessionDisplay display);
    DisplayChoice(const DisplayChoice&) = delete;
    DisplayChoice& operator=(const DisplayChoice&) = delete;
    ~DisplayChoice();

    /// The display that the application object came to use: without Qt's part for Wayland it is an X server.
    [[nodiscard]] SessionDisplay made() const;

  private:
    SessionDisplay display;
    QByteArray usersPlatform;
};

} // namespace velloren
