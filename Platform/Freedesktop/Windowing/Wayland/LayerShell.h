#pragma once

#include <QRect>
#include <QRegion>

#include <chrono>
#include <functional>
#include <memory>

class QScreen;
struct wl_buffer;
struct wl_callback;
struct wl_compositor;
struct wl_display;
struct wl_registry;
struct wl_seat;
struct wl_shm;
struct wl_surface;
struct wp_viewport;
struct wp_viewporter;
struct xdg_surface;
struct xdg_toplevel;
struct xdg_wm_base;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;

namespace velloren {

/// Deletes what the compositor keeps for this process.
struct WaylandRelease {
    void operator()(wl_buffer* buffer) const;
    void operator()(wl_callback* callback) const;
    void operator()(wl_compositor* compositor) const;
    void operator()(wl_display* display) const;
    void operator()(wl_registry* registry) const;
    void operator()(wl_seat* seat) const;
    void operator()(wl_shm* memory) const;
    void operator()(wl_surface* surface) const;
    void operator()(wp_viewport* viewport) const;
    void operator()(wp_viewporter* viewporter) const;
    void operator()(xdg_surface* surface) const;
    void operator()(xdg_toplevel* window) const;
    void operator()(xdg_wm_base* windows) const;
    void operator()(zwlr_layer_shell_v1* shell) const;
    void operator()(zwlr_layer_surface_v1* surface) const;
};

template <class Object>
using WaylandOwned = std::unique_ptr<Object, WaylandRelease>;

/// Whether the compositor of this session lets programs place surfaces of the desktop's own kind. Asked on a
/// connection of its own, before Qt has one; a compositor that does not answer within `limit` has not.
[[nodiscard]] bool compositorHasLayerShell(std::chrono::milliseconds limit);

/// Something that the compositor says once, later. Released before that, it is not heard. Main thread only.
class CompositorNotice final {
  public:
    CompositorNotice(WaylandOwned<wl_callback> callback, std::function<void()> handler);
    CompositorNotice(const CompositorNotice&) = delete;
    CompositorNotice& operator=(const CompositorNotice&) = delete;
    ~CompositorNotice();

  private:
    std::function<void()> handler;
    WaylandOwned<wl_callback> callback;
};

/// What of the compositor that Qt is connected to makes surfaces and gives them roles. Qt has to be on
/// Wayland. Main thread only.
class LayerShell final {
  public:
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

/// Asks how large a maximized window would be, on the screen that the compositor would show it on. It is
/// never shown. Bars that are no layer surfaces (Plasma's) leave out of that what they take. Main thread
/// only.
class MaximizedSize final {
  public:
    /// `told` gets the size, empty where the compositor leaves it to the window.
    MaximizedSize(const LayerShell& shell, std::function<void(QSize)> told);
    MaximizedSize(const MaximizedSize&) = delete;
    MaximizedSize& operator=(const MaximizedSize&) = delete;
    ~MaximizedSize();

  private:
    std::function<void(QSize)> told;
    QSize size;
    WaylandOwned<wl_surface> surface;
    WaylandOwned<xdg_surface> role;
    WaylandOwned<xdg_toplevel> window;
};

} // namespace velloren
