// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/wayland/WaylandConnection.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

struct wp_fractional_scale_manager_v1;
struct wp_viewporter;
struct zwlr_layer_shell_v1;

namespace parlivo::wayland {

/// What the compositor offers for surfaces in layers, and the screens. Connection thread.
class LayerGlobals {
  public:
    explicit LayerGlobals(WaylandConnection& connection);
    ~LayerGlobals();
    LayerGlobals(const LayerGlobals&) = delete;
    LayerGlobals& operator=(const LayerGlobals&) = delete;

    /// Whether surfaces can be made.
    bool areComplete() const { return compositor && memory && shell; }
    bool hasScreen() const { return !outputs_.empty(); }
    /// The scale of a screen, a whole number; 1 for one that is gone.
    int scaleOf(const wl_output* output) const;
    /// The largest of all screens.
    int largestScale() const;

    wl_compositor* compositor = nullptr;
    wl_shm* memory = nullptr;
    zwlr_layer_shell_v1* shell = nullptr;
    // Null where scales are whole numbers.
    wp_viewporter* viewporter = nullptr;
    wp_fractional_scale_manager_v1* fractionalScales = nullptr;

    /// Called when a screen came.
    std::function<void()> screenAdded;
    /// Called when a screen went.
    std::function<void()> screenRemoved;
    /// Called when a screen changed its scale.
    std::function<void()> scaleChanged;

  private:
    struct Output;

    void add(std::uint32_t name);
    void remove(std::uint32_t name);

    WaylandConnection& connection_;
    std::map<std::uint32_t, std::unique_ptr<Output>> outputs_;
};

}  // namespace parlivo::wayland
