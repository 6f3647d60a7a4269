#pragma once

#include "Platform/Freedesktop/Windowing/Wayland/WaylandOwned.h"

#include <QSize>

#include <functional>

namespace velloren {

class LayerShell;

/// Asks how large a maximized window would be, on the screen that the compositor would show it on. It is
/// never shown. Bars that are no layer surfaces (Plasma's) leave out of that what they take. Main thread
/// only.
class MaximizedSize final {
  public:
    /// `known` gets the size, empty where the compositor leaves it to the window.
    MaximizedSize(const LayerShell& shell, std::function<void(QSize)> known);
    MaximizedSize(const MaximizedSize&) = delete;
    MaximizedSize& operator=(const MaximizedSize&) = delete;
    ~MaximizedSize();

  private:
    std::function<void(QSize)> known;
    QSize size;
    WaylandOwned<wl_surface> surface;
    WaylandOwned<xdg_surface> role;
    WaylandOwned<xdg_toplevel> window;
};

} // namespace velloren
