#include "Platform/Freedesktop/Windowing/Wayland/LayerShellProbe.h"

#include "Platform/Freedesktop/Windowing/Wayland/LayerShell.h"
#include "Platform/Freedesktop/Windowing/Wayland/WaylandOwned.h"

#include <string_view>

namespace velloren {

bool compositorHasLayerShell() {
    const WaylandOwned<wl_display> display(wl_display_connect(nullptr));
    if (!display)
        return false;
    static constexpr wl_registry_listener listener{
        [](void* hasLayerShell, wl_registry*, std::uint32_t, const char* interface, std::uint32_t version) {
            if (std::string_view(interface) == zwlr_layer_shell_v1_interface.name)
                *static_cast<bool*>(hasLayerShell) = version >= LayerShell::oldestVersion;
        },
        [](void*, wl_registry*, std::uint32_t) {}};
    bool hasLayerShell = false;
    const WaylandOwned<wl_registry> registry(wl_display_get_registry(display.get()));
    wl_registry_add_listener(registry.get(), &listener, &hasLayerShell);
    return wl_display_roundtrip(display.get()) >= 0 && hasLayerShell;
}

} // namespace velloren
