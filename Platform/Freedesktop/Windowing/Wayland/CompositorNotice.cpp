#include "Platform/Freedesktop/Windowing/Wayland/CompositorNotice.h"

#include <utility>

namespace velloren {

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

} // namespace velloren
