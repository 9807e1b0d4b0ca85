// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/LayerGlobals.h"

#include <fractional-scale-client.h>
#include <viewporter-client.h>
#include <wlr-layer-shell-client.h>

#include <algorithm>

namespace parlivo::wayland {

/// A screen.
struct LayerGlobals::Output {
    Output(LayerGlobals& globals, wl_output* output) : owner(globals), handle(output) {
        static const wl_output_listener listener{
            .geometry = [](void*, wl_output*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                           std::int32_t, const char*, const char*, std::int32_t) {},
            .mode = [](void*, wl_output*, std::uint32_t, std::int32_t, std::int32_t, std::int32_t) {},
            .done = [](void*, wl_output*) {},
            .scale =
                [](void* data, wl_output*, std::int32_t factor) {
                    auto& self = *static_cast<Output*>(data);
                    self.scale = factor;
                    if (self.owner.scaleChanged) self.owner.scaleChanged();
                },
            .name = [](void*, wl_output*, const char*) {},
            .description = [](void*, wl_output*, const char*) {},
        };
        wl_output_add_listener(handle, &listener, this);
    }
    ~Output() { wl_output_destroy(handle); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    LayerGlobals& owner;
    wl_output* handle;
    int scale = 1;
};

LayerGlobals::LayerGlobals(WaylandConnection& connection)
    : compositor(connection.bind<wl_compositor>(wl_compositor_interface, 4)),
      memory(connection.bind<wl_shm>(wl_shm_interface, 1)),
      shell(connection.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 3)),
      viewporter(connection.bind<wp_viewporter>(wp_viewporter_interface, 1)),
      fractionalScales(
          connection.bind<wp_fractional_scale_manager_v1>(wp_fractional_scale_manager_v1_interface, 1)),
      connection_(connection) {
    connection.watchGlobals({.interface = &wl_output_interface,
                             .added = [this](std::uint32_t name) { add(name); },
                             .removed = [this](std::uint32_t name) { remove(name); }});
    connection.roundTrip();  // the scales
}

LayerGlobals::~LayerGlobals() {
    connection_.watchGlobals({});
    outputs_.clear();
    if (fractionalScales) wp_fractional_scale_manager_v1_destroy(fractionalScales);
    if (viewporter) wp_viewporter_destroy(viewporter);
    if (shell) zwlr_layer_shell_v1_destroy(shell);
    if (memory) wl_shm_destroy(memory);
    if (compositor) wl_compositor_destroy(compositor);
}

void LayerGlobals::add(std::uint32_t name) {
    constexpr std::uint32_t withScale = 2;
    auto* const output = connection_.bindNamed<wl_output>(name, wl_output_interface, withScale);
    if (!output) return;
    outputs_[name] = std::make_unique<Output>(*this, output);
    if (screenAdded) screenAdded();
}

void LayerGlobals::remove(std::uint32_t name) {
    if (outputs_.erase(name) > 0 && screenRemoved) screenRemoved();
}

int LayerGlobals::scaleOf(const wl_output* output) const {
    const auto found =
        std::ranges::find_if(outputs_, [&](const auto& entry) { return entry.second->handle == output; });
    return found == outputs_.end() ? 1 : found->second->scale;
}

int LayerGlobals::largestScale() const {
    int largest = 1;
    for (const auto& [name, output] : outputs_) largest = std::max(largest, output->scale);
    return largest;
}

}  // namespace parlivo::wayland
