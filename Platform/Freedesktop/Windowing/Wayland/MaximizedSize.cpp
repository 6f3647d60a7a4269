#include "Platform/Freedesktop/Windowing/Wayland/MaximizedSize.h"

#include "Platform/Freedesktop/Windowing/Wayland/LayerShell.h"

#include <utility>

namespace velloren {

MaximizedSize::MaximizedSize(const LayerShell& shell, std::function<void(QSize)> handler)
    : known(std::move(handler)), surface(shell.newSurface()),
      role(xdg_wm_base_get_xdg_surface(shell.windowMaker(), surface.get())),
      window(xdg_surface_get_toplevel(role.get())) {
    static constexpr xdg_surface_listener roleListener{
        [](void* self, xdg_surface* role, std::uint32_t serial) {
            xdg_surface_ack_configure(role, serial);
            static_cast<MaximizedSize*>(self)->known(static_cast<MaximizedSize*>(self)->size);
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
