#include "Platform/Freedesktop/Windowing/Wayland/LayerShellProbe.h"

#include "Platform/Freedesktop/Windowing/Wayland/LayerShell.h"
#include "Platform/Freedesktop/Windowing/Wayland/WaylandOwned.h"
#include "layer-shell-client-protocol.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <string_view>
#include <wayland-client.h>

namespace velloren {

namespace {

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

} // namespace

bool compositorHasLayerShell(std::chrono::milliseconds limit) {
    const WaylandOwned<wl_display> display(wl_display_connect(nullptr));
    if (!display)
        return false;
    Question question;
    static constexpr wl_registry_listener registryListener{
        [](void* data, wl_registry*, std::uint32_t, const char* interface, std::uint32_t version) {
            if (std::string_view(interface) == zwlr_layer_shell_v1_interface.name)
                static_cast<Question*>(data)->hasLayerShell = version >= LayerShell::oldestVersion;
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

} // namespace velloren
