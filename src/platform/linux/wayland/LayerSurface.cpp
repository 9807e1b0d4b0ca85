// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/LayerSurface.h"

#include <fractional-scale-client.h>
#include <viewporter-client.h>
#include <wlr-layer-shell-client.h>

#include <algorithm>
#include <utility>

namespace parlivo::wayland {

namespace {

// The protocol's numbers (zwlr_layer_shell_v1.layer, zwlr_layer_surface_v1.anchor).
constexpr std::uint32_t overlayLayer = 3;
constexpr std::uint32_t bottomEdge = 2;
/// wp_fractional_scale_v1 counts in parts of 120.
constexpr double fractionalUnit = 120;

}  // namespace

LayerSurface::LayerSurface(LayerGlobals& globals, const PanelPlacing& placing, Events events)
    : globals_(globals),
      placing_(placing),
      events_(std::move(events)),
      surface_(wl_compositor_create_surface(globals.compositor)),
      // The compositor chooses the screen: the one that the user works on.
      layer_(
          zwlr_layer_shell_v1_get_layer_surface(globals.shell, surface_, nullptr, overlayLayer, "parlivo")),
      buffers_(globals.memory) {
    watchLayer();
    watchScale();
    place();
    wl_surface_commit(surface_);
}

LayerSurface::~LayerSurface() {
    if (fractional_) wp_fractional_scale_v1_destroy(fractional_);
    if (viewport_) wp_viewport_destroy(viewport_);
    zwlr_layer_surface_v1_destroy(layer_);
    wl_surface_destroy(surface_);
}

void LayerSurface::place() {
    zwlr_layer_surface_v1_set_size(layer_, static_cast<std::uint32_t>(placing_.size.width()),
                                   static_cast<std::uint32_t>(placing_.size.height()));
    zwlr_layer_surface_v1_set_anchor(layer_, bottomEdge);
    zwlr_layer_surface_v1_set_margin(layer_, 0, 0, placing_.aboveEdge, 0);
    zwlr_layer_surface_v1_set_keyboard_interactivity(layer_, 0);
    wl_region* const nowhere = wl_compositor_create_region(globals_.compositor);
    wl_surface_set_input_region(surface_, nowhere);
    wl_region_destroy(nowhere);
}

void LayerSurface::watchLayer() {
    static const zwlr_layer_surface_v1_listener layerListener{
        .configure = [](void* data, zwlr_layer_surface_v1*, std::uint32_t serial, std::uint32_t,
                        std::uint32_t) { static_cast<LayerSurface*>(data)->configure(serial); },
        .closed = [](void* data,
                     zwlr_layer_surface_v1*) { static_cast<LayerSurface*>(data)->events_.closed(); },
    };
    zwlr_layer_surface_v1_add_listener(layer_, &layerListener, this);
}

void LayerSurface::watchScale() {
    if (globals_.viewporter && globals_.fractionalScales)
        watchFractionalScale();
    else
        watchScreens();
}

void LayerSurface::watchFractionalScale() {
    static const wp_fractional_scale_v1_listener listener{
        .preferred_scale = [](void* data, wp_fractional_scale_v1*, std::uint32_t scale) {
            static_cast<LayerSurface*>(data)->events_.scaled(scale / fractionalUnit);
        }};
    viewport_ = wp_viewporter_get_viewport(globals_.viewporter, surface_);
    wp_viewport_set_destination(viewport_, placing_.size.width(), placing_.size.height());
    fractional_ = wp_fractional_scale_manager_v1_get_fractional_scale(globals_.fractionalScales, surface_);
    wp_fractional_scale_v1_add_listener(fractional_, &listener, this);
}

void LayerSurface::watchScreens() {
    // Newer headers have further members, for versions of the protocol that are not asked for.
    static const wl_surface_listener listener = [] {
        wl_surface_listener events{};
        events.enter = [](void* data, wl_surface*, wl_output* screen) {
            auto& self = *static_cast<LayerSurface*>(data);
            self.screens_.insert(screen);
            self.updateScale();
        };
        events.leave = [](void* data, wl_surface*, wl_output* screen) {
            auto& self = *static_cast<LayerSurface*>(data);
            self.screens_.erase(screen);
            self.updateScale();
        };
        return events;
    }();
    wl_surface_add_listener(surface_, &listener, this);
    updateScale();
}

void LayerSurface::updateScale() {
    if (viewport_) return;
    int scale = screens_.empty() ? globals_.largestScale() : 1;
    for (const auto* screen : screens_) scale = std::max(scale, globals_.scaleOf(screen));
    events_.scaled(scale);
}

void LayerSurface::configure(std::uint32_t serial) {
    zwlr_layer_surface_v1_ack_configure(layer_, serial);
    configured_ = true;
    if (const QImage frame = std::exchange(early_, {}); !frame.isNull()) present(frame);
}

void LayerSurface::present(const QImage& frame) {
    if (!configured_) {
        early_ = frame.copy();
        return;
    }
    wl_buffer* const buffer = buffers_.fill(frame);
    if (!buffer) return;
    if (!viewport_) wl_surface_set_buffer_scale(surface_, std::max(1, frame.width() / placing_.size.width()));
    wl_surface_attach(surface_, buffer, 0, 0);
    wl_surface_damage_buffer(surface_, 0, 0, frame.width(), frame.height());
    wl_surface_commit(surface_);
}

}  // namespace parlivo::wayland
