#pragma once

#include <memory>

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

} // namespace velloren
