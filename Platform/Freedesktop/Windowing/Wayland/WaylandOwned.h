#pragma once

#include "layer-shell-client-protocol.h"
#include "viewporter-client-protocol.h"
#include "xdg-shell-client-protocol.h"

#include <memory>
#include <tuple>
#include <wayland-client.h>

namespace velloren {

/// Deletes what the compositor keeps for this process, each kind by its own function.
struct WaylandRelease {
    template <class Object>
    void operator()(Object* object) const {
        constexpr std::tuple functions{
            &wl_buffer_destroy,     &wl_callback_destroy,         &wl_compositor_destroy,
            &wl_display_disconnect, &wl_registry_destroy,         &wl_seat_destroy,
            &wl_shm_destroy,        &wl_surface_destroy,          &wp_viewport_destroy,
            &wp_viewporter_destroy, &xdg_surface_destroy,         &xdg_toplevel_destroy,
            &xdg_wm_base_destroy,   &zwlr_layer_shell_v1_destroy, &zwlr_layer_surface_v1_destroy};
        std::get<void (*)(Object*)>(functions)(object);
    }
};

template <class Object>
using WaylandOwned = std::unique_ptr<Object, WaylandRelease>;

} // namespace velloren
