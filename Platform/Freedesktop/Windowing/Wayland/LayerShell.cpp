#include "Platform/Freedesktop/Windowing/Wayland/LayerShell.h"

#include "Platform/Freedesktop/Windowing/QtPrivate.h"
#include "layer-shell-client-protocol.h"
#include "viewporter-client-protocol.h"
#include "xdg-shell-client-protocol.h"

#include <QScreen>

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <wayland-client.h>

namespace velloren {

namespace {

constexpr std::uint32_t oldestLayerShell = 3; // that of KWin 5
constexpr std::uint32_t keyboardOnDemandSince = 4;

const char* nameOf(const wl_interface& interface) {
    return interface.name;
}

/// Waits until the compositor says something, and handles it. Whether there is any use in waiting on.
bool dispatchBefore(wl_display* display, std::chrono::steady_clock::time_point limit) {
    while (wl_display_prepare_read(display) != 0) {
        if (wl_display_dispatch_pending(display) < 0)
            return false;
    }
    wl_display_flush(display);
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(limit - std::chrono::steady_clock::now());
    pollfd descriptor{wl_display_get_fd(display), POLLIN, 0};
    const int ready = poll(&descriptor, 1, int(std::max<std::int64_t>(left.count(), 0)));
    if (ready <= 0) {
        const bool interrupted = ready < 0 && errno == EINTR;
        wl_display_cancel_read(display);
        return interrupted;
    }
    return wl_display_read_events(display) == 0 && wl_display_dispatch_pending(display) >= 0;
}

struct Question {
    bool hasLayerShell = false;
    bool answered = false;
};

/// Memory of one transparent pixel.
WaylandOwned<wl_buffer> transparentBuffer(wl_shm& memory, QSize size) {
    const int stride = size.width() * 4;
    const int length = stride * size.height();
    const int file = memfd_create("nothing", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, length) != 0) {
        close(file);
        return nullptr;
    }
    wl_shm_pool* pool = wl_shm_create_pool(&memory, file, length);
    WaylandOwned<wl_buffer> buffer(
        wl_shm_pool_create_buffer(pool, 0, size.width(), size.height(), stride, WL_SHM_FORMAT_ARGB8888));
    wl_shm_pool_destroy(pool);
    close(file);
    return buffer;
}

constexpr std::uint32_t largestLength = 0x7fff;

constexpr std::uint32_t allEdges = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                   ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;

std::uint32_t numberOf(LayerSurface::Layer layer) {
    return layer == LayerSurface::Layer::Top ? ZWLR_LAYER_SHELL_V1_LAYER_TOP
                                             : ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY;
}

} // namespace

void WaylandRelease::operator()(wl_buffer* buffer) const {
    wl_buffer_destroy(buffer);
}

void WaylandRelease::operator()(wl_callback* callback) const {
    wl_callback_destroy(callback);
}

void WaylandRelease::operator()(wl_compositor* compositor) const {
    wl_compositor_destroy(compositor);
}

void WaylandRelease::operator()(wl_display* display) const {
    wl_display_disconnect(display);
}

void WaylandRelease::operator()(wl_registry* registry) const {
    wl_registry_destroy(registry);
}

void WaylandRelease::operator()(wl_seat* seat) const {
    wl_seat_destroy(seat);
}

void WaylandRelease::operator()(wl_shm* memory) const {
    wl_shm_destroy(memory);
}

void WaylandRelease::operator()(wl_surface* surface) const {
    wl_surface_destroy(surface);
}

void WaylandRelease::operator()(wp_viewport* viewport) const {
    wp_viewport_destroy(viewport);
}

void WaylandRelease::operator()(wp_viewporter* viewporter) const {
    wp_viewporter_destroy(viewporter);
}

void WaylandRelease::operator()(xdg_surface* surface) const {
    xdg_surface_destroy(surface);
}

void WaylandRelease::operator()(xdg_toplevel* window) const {
    xdg_toplevel_destroy(window);
}

void WaylandRelease::operator()(xdg_wm_base* windows) const {
    xdg_wm_base_destroy(windows);
}

void WaylandRelease::operator()(zwlr_layer_shell_v1* shell) const {
    zwlr_layer_shell_v1_destroy(shell);
}

void WaylandRelease::operator()(zwlr_layer_surface_v1* surface) const {
    zwlr_layer_surface_v1_destroy(surface);
}

bool compositorHasLayerShell(std::chrono::milliseconds limit) {
    const WaylandOwned<wl_display> display(wl_display_connect(nullptr));
    if (!display)
        return false;
    Question question;
    static constexpr wl_registry_listener registryListener{
        [](void* data, wl_registry*, std::uint32_t, const char* interface, std::uint32_t version) {
            if (interface == std::string_view(nameOf(zwlr_layer_shell_v1_interface)))
                static_cast<Question*>(data)->hasLayerShell = version >= oldestLayerShell;
        },
        [](void*, wl_registry*, std::uint32_t) {}};
    static constexpr wl_callback_listener answerListener{
        [](void* data, wl_callback*, std::uint32_t) { static_cast<Question*>(data)->answered = true; }};
    const WaylandOwned<wl_registry> registry(wl_display_get_registry(display.get()));
    wl_registry_add_listener(registry.get(), &registryListener, &question);
    const WaylandOwned<wl_callback> answer(wl_display_sync(display.get()));
    wl_callback_add_listener(answer.get(), &answerListener, &question);
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!question.answered && dispatchBefore(display.get(), end)) {
    }
    return question.answered && question.hasLayerShell;
}

CompositorNotice::CompositorNotice(WaylandOwned<wl_callback> notice, std::function<void()> handler)
    : handler(std::move(handler)), callback(std::move(notice)) {
    static constexpr wl_callback_listener listener{[](void* self, wl_callback*, std::uint32_t) {
        // The handler may release this.
        const auto handler = std::exchange(static_cast<CompositorNotice*>(self)->handler, nullptr);
        handler();
    }};
    wl_callback_add_listener(callback.get(), &listener, this);
}

CompositorNotice::~CompositorNotice() = default;

LayerShell::LayerShell() : display(qtprivate::waylandDisplay()), registry(wl_display_get_registry(display)) {
    static constexpr wl_registry_listener listener{
        [](void* self, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t version) {
            static_cast<LayerShell*>(self)->bind(name, interface, version);
        },
        [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry_add_listener(registry.get(), &listener, this);
}

LayerShell::~LayerShell() = default;

void LayerShell::bind(std::uint32_t name, std::string_view interface, std::uint32_t version) {
    static constexpr auto hasDevices = [](void* self, wl_seat*, std::uint32_t capabilities) {
        static_cast<LayerShell*>(self)->pointerThere = capabilities & WL_SEAT_CAPABILITY_POINTER;
    };
    static constexpr wl_seat_listener devices{hasDevices, nullptr}; // the other is of later versions
    static constexpr xdg_wm_base_listener alive{
        [](void*, xdg_wm_base* base, std::uint32_t serial) { xdg_wm_base_pong(base, serial); }};
    const auto take = [&]<class Object>(WaylandOwned<Object>& global, const wl_interface& wanted,
                                        std::uint32_t oldest, std::uint32_t newest) {
        if (interface != wanted.name || version < oldest)
            return false;
        global.reset(
            static_cast<Object*>(wl_registry_bind(registry.get(), name, &wanted, std::min(version, newest))));
        return true;
    };
    knowsFractions = knowsFractions || interface == "wp_fractional_scale_manager_v1";
    take(compositor, wl_compositor_interface, 3, 4);
    take(memory, wl_shm_interface, 1, 1);
    take(viewporter, wp_viewporter_interface, 1, 1);
    take(shell, zwlr_layer_shell_v1_interface, oldestLayerShell, keyboardOnDemandSince);
    if (take(seat, wl_seat_interface, 1, 1))
        wl_seat_add_listener(seat.get(), &devices, this);
    if (take(windows, xdg_wm_base_interface, 1, 1))
        xdg_wm_base_add_listener(windows.get(), &alive, nullptr);
}

WaylandOwned<wl_surface> LayerShell::newSurface() const {
    return WaylandOwned<wl_surface>(wl_compositor_create_surface(compositor.get()));
}

std::shared_ptr<void> LayerShell::showNothing(wl_surface& surface, QSize size) const {
    struct Shown {
        WaylandOwned<wl_buffer> buffer;
        WaylandOwned<wp_viewport> viewport;
    };

    // One pixel stands for all of them where the compositor can stretch it.
    auto shown = std::make_shared<Shown>();
    shown->buffer = transparentBuffer(*memory, viewporter ? QSize(1, 1) : size);
    if (!shown->buffer)
        return nullptr;
    if (viewporter) {
        shown->viewport.reset(wp_viewporter_get_viewport(viewporter.get(), &surface));
        wp_viewport_set_destination(shown->viewport.get(), size.width(), size.height());
    }
    countPixelsAsTheyAre(surface);
    wl_surface_attach(&surface, shown->buffer.get(), 0, 0);
    wl_surface_damage(&surface, 0, 0, size.width(), size.height());
    wl_surface_commit(&surface);
    return shown;
}

bool LayerShell::isOfPlasmaSix() const {
    return shell && zwlr_layer_shell_v1_get_version(shell.get()) > oldestLayerShell;
}

std::unique_ptr<CompositorNotice> LayerShell::afterAnswers(std::function<void()> handler) const {
    return std::make_unique<CompositorNotice>(WaylandOwned<wl_callback>(wl_display_sync(display)),
                                              std::move(handler));
}

std::unique_ptr<CompositorNotice> LayerShell::whenSeen(wl_surface& surface,
                                                       std::function<void()> handler) const {
    WaylandOwned<wl_callback> frame(wl_surface_frame(&surface));
    wl_surface_commit(&surface);
    return std::make_unique<CompositorNotice>(std::move(frame), std::move(handler));
}

bool LayerShell::scalesByFractions() const {
    return qtprivate::scalesByFractions && viewporter && knowsFractions;
}

void LayerShell::countPixelsAsTheyAre(wl_surface& surface) const {
    wl_surface_set_buffer_scale(&surface, 1);
}

void LayerShell::letThrough(wl_surface& surface, const QRegion& holes) const {
    wl_region* region = wl_compositor_create_region(compositor.get());
    wl_region_add(region, 0, 0, int(largestLength), int(largestLength));
    for (const QRect& hole : holes)
        wl_region_subtract(region, hole.left(), hole.top(), hole.width(), hole.height());
    countPixelsAsTheyAre(surface);
    wl_surface_set_input_region(&surface, region);
    wl_surface_commit(&surface);
    wl_region_destroy(region);
}

LayerSurface::LayerSurface(const LayerShell& shell, wl_surface& surface, QScreen& screen, Layer layer,
                           Handlers handlers)
    : surface(surface), handlers(std::move(handlers)),
      role(zwlr_layer_shell_v1_get_layer_surface(shell.layerShell(), &surface, qtprivate::outputOf(screen),
                                                 numberOf(layer), "popover")) {
    static constexpr zwlr_layer_surface_v1_listener listener{
        &LayerSurface::configure, [](void* self, zwlr_layer_surface_v1*) {
            if (const auto& closed = static_cast<LayerSurface*>(self)->handlers.closed)
                closed();
        }};
    zwlr_layer_surface_v1_add_listener(role.get(), &listener, this);
}

LayerSurface::LayerSurface(const LayerShell& shell, wl_surface& surface, QScreen& screen, Bars bars,
                           Handlers handlers)
    : LayerSurface(shell, surface, screen, bars == Bars::Avoid ? Layer::Top : Layer::Overlay,
                   std::move(handlers)) {
    zwlr_layer_surface_v1_set_anchor(role.get(), allEdges);
    zwlr_layer_surface_v1_set_exclusive_zone(role.get(), bars == Bars::Avoid ? 0 : -1);
    wl_surface_commit(&surface);
}

LayerSurface::LayerSurface(const LayerShell& shell, wl_surface& surface, QScreen& screen, const QRect& frame,
                           Keyboard keyboard, Handlers handlers)
    : LayerSurface(shell, surface, screen, Layer::Top, std::move(handlers)) {
    zwlr_layer_surface_v1_set_anchor(role.get(),
                                     ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT);
    zwlr_layer_surface_v1_set_exclusive_zone(role.get(), -1);
    // Before there was such a demand, the other kind was what compositors took for it on this layer.
    const bool onDemand = keyboard == Keyboard::OnDemand &&
                          zwlr_layer_surface_v1_get_version(role.get()) >= keyboardOnDemandSince;
    zwlr_layer_surface_v1_set_keyboard_interactivity(
        role.get(), onDemand ? ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_ON_DEMAND
                             : ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE);
    moveTo(frame);
}

LayerSurface::~LayerSurface() = default;

void LayerSurface::moveTo(const QRect& frame) {
    if (std::exchange(placedAt, frame) == frame)
        return;
    zwlr_layer_surface_v1_set_margin(role.get(), frame.top(), 0, 0, frame.left());
    zwlr_layer_surface_v1_set_size(role.get(), std::uint32_t(frame.width()), std::uint32_t(frame.height()));
    wl_surface_commit(&surface);
}

void LayerSurface::moveTo(Layer layer) {
    zwlr_layer_surface_v1_set_layer(role.get(), numberOf(layer));
    wl_surface_commit(&surface);
}

void LayerSurface::configure(void* self, zwlr_layer_surface_v1* role, std::uint32_t serial,
                             std::uint32_t width, std::uint32_t height) {
    zwlr_layer_surface_v1_ack_configure(role, serial);
    auto* const surface = static_cast<LayerSurface*>(self);
    const QSize size(int(std::min(width, largestLength)), int(std::min(height, largestLength)));
    if (surface->configuredSize == size)
        return; // some compositors say so after every commit of whichever surface
    surface->configuredSize = size;
    surface->handlers.configured(size);
}

MaximizedSize::MaximizedSize(const LayerShell& shell, std::function<void(QSize)> handler)
    : told(std::move(handler)), surface(shell.newSurface()),
      role(xdg_wm_base_get_xdg_surface(shell.windowMaker(), surface.get())),
      window(xdg_surface_get_toplevel(role.get())) {
    static constexpr xdg_surface_listener roleListener{
        [](void* self, xdg_surface* role, std::uint32_t serial) {
            xdg_surface_ack_configure(role, serial);
            static_cast<MaximizedSize*>(self)->told(static_cast<MaximizedSize*>(self)->size);
        }};
    static constexpr xdg_toplevel_listener windowListener{
        [](void* self, xdg_toplevel*, std::int32_t width, std::int32_t height, wl_array*) {
            static_cast<MaximizedSize*>(self)->size = {width, height};
        },
        [](void*, xdg_toplevel*) {}, nullptr, nullptr};
    xdg_surface_add_listener(role.get(), &roleListener, this);
    xdg_toplevel_add_listener(window.get(), &windowListener, this);
    xdg_toplevel_set_maximized(window.get());
    wl_surface_commit(surface.get());
}

MaximizedSize::~MaximizedSize() = default;

} // namespace velloren
