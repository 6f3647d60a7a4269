#include "Platform/Freedesktop/Windowing/Wayland/WaylandOwned.h"

#include "layer-shell-client-protocol.h"
#include "viewporter-client-protocol.h"
#include "xdg-shell-client-protocol.h"

#include <wayland-client.h>

namespace velloren {

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

} // namespace velloren
