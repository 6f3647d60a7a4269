#include "Platform/Freedesktop/Windowing/Wayland/LayerSurface.h"

#include "Platform/Freedesktop/Windowing/QtPrivate.h"
#include "Platform/Freedesktop/Windowing/Wayland/LayerShell.h"

#include <algorithm>
#include <utility>

namespace velloren {

namespace {

constexpr std::uint32_t largestLength = 0x7fff;

constexpr std::uint32_t allEdges = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                   ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;

std::uint32_t numberOf(LayerSurface::Layer layer) {
    return layer == LayerSurface::Layer::Top ? ZWLR_LAYER_SHELL_V1_LAYER_TOP
                                             : ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY;
}

} // namespace

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
                          zwlr_layer_surface_v1_get_version(role.get()) >= LayerShell::keyboardOnDemandSince;
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

} // namespace velloren
