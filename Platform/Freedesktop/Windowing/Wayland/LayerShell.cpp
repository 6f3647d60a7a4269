#include "Platform/Freedesktop/Windowing/Wayland/LayerShell.h"

#include "Platform/Foundation/UniqueDescriptor.h"
#include "Platform/Freedesktop/Windowing/QtPrivate.h"

#include <algorithm>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace velloren {

namespace {

/// Memory of one transparent pixel.
WaylandOwned<wl_buffer> transparentBuffer(wl_shm& memory, QSize size) {
    const int stride = size.width() * 4;
    const int length = stride * size.height();
    const UniqueDescriptor file(memfd_create("nothing", MFD_CLOEXEC));
    if (!file || ftruncate(file.get(), length) != 0)
        return nullptr;
    wl_shm_pool* pool = wl_shm_create_pool(&memory, file.get(), length);
    WaylandOwned<wl_buffer> buffer(
        wl_shm_pool_create_buffer(pool, 0, size.width(), size.height(), stride, WL_SHM_FORMAT_ARGB8888));
    wl_shm_pool_destroy(pool);
    return buffer;
}

} // namespace

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
    take(shell, zwlr_layer_shell_v1_interface, oldestVersion, keyboardOnDemandSince);
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
    return shell && zwlr_layer_shell_v1_get_version(shell.get()) > oldestVersion;
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
    constexpr int everywhere = 0x7fff;
    wl_region_add(region, 0, 0, everywhere, everywhere);
    for (const QRect& hole : holes)
        wl_region_subtract(region, hole.left(), hole.top(), hole.width(), hole.height());
    countPixelsAsTheyAre(surface);
    wl_surface_set_input_region(&surface, region);
    wl_surface_commit(&surface);
    wl_region_destroy(region);
}

} // namespace velloren
