#pragma once

#include "Platform/Freedesktop/Windowing/Wayland/WaylandOwned.h"

#include <QRect>

#include <cstdint>
#include <functional>

class QScreen;

namespace velloren {

class LayerShell;

/// A surface in the role of a part of the desktop, above the windows of one screen. It is there once it was
/// configured and something was drawn on it. Lives shorter than its wl_surface. Main thread only.
class LayerSurface final {
  public:
    enum class Bars { Avoid, Ignore };

    /// Most compositors show full-screen windows above the one and below the other.
    enum class Layer { Top, Overlay };

    /// When the surface gets the keyboard: where the user gives it, or as long as it is there.
    enum class Keyboard { OnDemand, AtOnce };

    struct Handlers {
        /// The compositor gives the surface this size; called again whenever it changes.
        std::function<void(QSize)> configured;
        /// The compositor has taken the surface away, with its screen for instance.
        std::function<void()> closed;
    };

    /// One as large as the screen, in front of everything, or as large as what bars leave free of it, among
    /// them.
    LayerSurface(const LayerShell& shell, wl_surface& surface, QScreen& screen, Bars bars, Handlers handlers);
    /// One at `frame`, from the screen's top left corner, among the bars.
    LayerSurface(const LayerShell& shell, wl_surface& surface, QScreen& screen, const QRect& frame,
                 Keyboard keyboard, Handlers handlers);
    LayerSurface(const LayerSurface&) = delete;
    LayerSurface& operator=(const LayerSurface&) = delete;
    ~LayerSurface();

    void moveTo(const QRect& frame);
    void moveTo(Layer layer);

  private:
    LayerSurface(const LayerShell& shell, wl_surface& surface, QScreen& screen, Layer layer,
                 Handlers handlers);

    static void configure(void* self, zwlr_layer_surface_v1* role, std::uint32_t serial, std::uint32_t width,
                          std::uint32_t height);

    wl_surface& surface;
    Handlers handlers;
    QSize configuredSize;
    QRect placedAt;
    WaylandOwned<zwlr_layer_surface_v1> role;
};

} // namespace velloren
