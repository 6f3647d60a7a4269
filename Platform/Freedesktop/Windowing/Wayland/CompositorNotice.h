#pragma once

#include "Platform/Freedesktop/Windowing/Wayland/WaylandOwned.h"

#include <functional>

namespace velloren {

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

} // namespace velloren
