#pragma once

#include "Platform/Freedesktop/Windowing/Wayland/CompositorNotice.h"
#include "Platform/Freedesktop/Windowing/Wayland/WaylandOwned.h"

#include <QRegion>
#include <QSize>

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace velloren {

/// What of the compositor that Qt is connected to makes surfaces and gives them roles. Qt has to be on
/// Wayland. Main thread only.
class LayerShell final {
  public:
    static constexpr std::uint32_t oldestVersion = 3; ///< that of KWin 5
    static constexpr std::uint32_t keyboardOnDemandSince = 4;

    LayerShell();
    LayerShell(const LayerShell&) = delete;
    LayerShell& operator=(const LayerShell&) = delete;
    ~LayerShell();

    /// Whether the compositor has told of all that is needed here; it does so soon after the start.
    [[nodiscard]] bool isReady() const { return compositor && memory && shell; }

    /// Whether the user has a pointer, which is then over one of the surfaces that cover all screens.
    [[nodiscard]] bool hasPointer() const { return pointerThere; }

    [[nodiscard]] zwlr_layer_shell_v1* layerShell() const { return shell.get(); }

    /// Of KWin's: whether it is not the older one of Plasma 5.
    [[nodiscard]] bool isOfPlasmaSix() const;

    /// What makes windows; null where nothing does.
    [[nodiscard]] xdg_wm_base* windowMaker() const { return windows.get(); }

    /// A surface that is not one of Qt's.
    [[nodiscard]] WaylandOwned<wl_surface> newSurface() const;

    /// Shows nothing, `size` large, on a surface that Qt never draws on; it takes the pointer all the same.
    /// What is returned has to live as long as the surface shows that.
    [[nodiscard]] std::shared_ptr<void> showNothing(wl_surface& surface, QSize size) const;

    /// Calls the handler once the compositor has answered all that it was sent so far.
    [[nodiscard]] std::unique_ptr<CompositorNotice> afterAnswers(std::function<void()> handler) const;

    /// Calls the handler once the surface is part of what a screen shows: not while something hides it.
    [[nodiscard]] std::unique_ptr<CompositorNotice> whenSeen(wl_surface& surface,
                                                             std::function<void()> handler) const;

    /// Whether the size of a window's picture is the compositor's to scale, by whichever factor. Qt has its
    /// first word of the factor only after it made the surface.
    [[nodiscard]] bool scalesByFractions() const;

    /// Has the pixels of such a picture count as they are. Qt takes over the whole number that compositors
    /// name first, and leaves it when the fraction comes: some end the connection at sizes that it does not
    /// divide.
    void countPixelsAsTheyAre(wl_surface& surface) const;

    /// Has the surface take the pointer everywhere but there.
    void letThrough(wl_surface& surface, const QRegion& holes) const;

  private:
    void bind(std::uint32_t name, std::string_view interface, std::uint32_t version);

    wl_display* display;
    WaylandOwned<wl_registry> registry;
    WaylandOwned<wl_compositor> compositor;
    WaylandOwned<wl_seat> seat;
    WaylandOwned<wl_shm> memory;
    WaylandOwned<wp_viewporter> viewporter;
    WaylandOwned<xdg_wm_base> windows;
    WaylandOwned<zwlr_layer_shell_v1> shell;
    bool pointerThere = false;
    bool knowsFractions = false;
};

} // namespace velloren
