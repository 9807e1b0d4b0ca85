// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FloatingPanel.h"
#include "platform/linux/wayland/LayerGlobals.h"
#include "platform/linux/wayland/PictureBuffers.h"

#include <QImage>

#include <functional>
#include <memory>
#include <set>

struct wl_surface;
struct wp_fractional_scale_v1;
struct wp_viewport;
struct zwlr_layer_surface_v1;

namespace parlivo::wayland {

/// One showing of a panel. Connection thread.
class LayerSurface {
  public:
    struct Events {
        /// The scale to draw for: device pixels per device-independent one.
        std::function<void(double scale)> scaled;
        /// The compositor took it from the screen, which may be unplugged. This is still used when it
        /// returns.
        std::function<void()> closed;
    };

    LayerSurface(LayerGlobals& globals, const PanelPlacing& placing, Events events);
    ~LayerSurface();
    LayerSurface(const LayerSurface&) = delete;
    LayerSurface& operator=(const LayerSurface&) = delete;

    /// Shows a frame, at once or when the compositor has placed the panel. Frames that come faster than the
    /// compositor shows them are left out.
    void present(const QImage& frame);
    /// Works out the scale anew.
    void updateScale();

  private:
    void place();
    void watchLayer();
    void watchScale();
    void watchFractionalScale();
    void watchScreens();
    void configure(std::uint32_t serial);

    LayerGlobals& globals_;
    const PanelPlacing placing_;
    const Events events_;
    wl_surface* surface_;
    zwlr_layer_surface_v1* layer_;
    wp_viewport* viewport_ = nullptr;
    wp_fractional_scale_v1* fractional_ = nullptr;
    PictureBuffers buffers_;
    std::set<wl_output*> screens_;  // on which it is
    bool configured_ = false;
    QImage early_;  // a frame that came before the panel was placed
};

}  // namespace parlivo::wayland
