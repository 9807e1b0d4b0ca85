// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/LayerPanels.h"

#include <wlr-layer-shell-client.h>

#include <utility>

namespace parlivo::wayland {

LayerPanel::LayerPanel(WaylandConnection& connection, LayerGlobals& globals, const PanelPlacing& placing)
    : connection_(connection), globals_(globals), placing_(placing) {
    connection_.run([this] {
        scale_ = globals_.largestScale();
        globals_.screenAdded = [this] {
            if (wanted_ && !surface_) map();
        };
        // Not every compositor closes what was on a screen that is gone (sway 1.10).
        globals_.screenRemoved = [this] {
            if (surface_) closed();
        };
        globals_.scaleChanged = [this] {
            if (surface_) surface_->updateScale();
        };
    });
}

LayerPanel::~LayerPanel() {
    const auto destroyAll = [this] {
        alive_.reset();
        globals_.screenAdded = nullptr;
        globals_.screenRemoved = nullptr;
        globals_.scaleChanged = nullptr;
        surface_.reset();
    };
    // A broken connection has no thread any more that could use the objects.
    if (!connection_.run(destroyAll)) destroyAll();
}

void LayerPanel::show() {
    visible_ = true;
    connection_.run([this] {
        wanted_ = true;
        // Anew, on the screen that is right now.
        surface_.reset();
        map();
    });
}

void LayerPanel::hide() {
    visible_ = false;
    connection_.run([this] {
        wanted_ = false;
        surface_.reset();
    });
}

void LayerPanel::present(const QImage& frame) {
    if (!visible_) return;
    connection_.run([&] {
        if (surface_) surface_->present(frame);
    });
}

void LayerPanel::map() {
    if (!globals_.hasScreen()) return;
    surface_ = std::make_unique<LayerSurface>(
        globals_, placing_,
        LayerSurface::Events{.scaled = [this](double scale) { scale_ = scale; },
                             .closed = [this] { closed(); }});
}

/// Another screen may take it. By the time of the answer the compositor has said which ones are left.
void LayerPanel::closed() {
    if (std::exchange(moving_, true)) return;
    connection_.afterRequests([this, alive = std::weak_ptr(alive_)] {
        if (alive.expired()) return;
        moving_ = false;
        surface_.reset();
        if (wanted_) map();
    });
}

bool LayerPanels::isOffered(WaylandConnection& connection) {
    return connection.offers(zwlr_layer_shell_v1_interface);
}

LayerPanels::~LayerPanels() {
    if (!connection_) return;
    const auto destroyAll = [this] { globals_.reset(); };
    // A broken connection has no thread any more that could use the objects.
    if (!connection_->run(destroyAll)) destroyAll();
}

std::unique_ptr<FloatingPanel> LayerPanels::makePanel(const PanelPlacing& placing) {
    if (!connection_) {
        connection_ = WaylandConnection::open();
        if (!connection_) return nullptr;
        connection_->run([this] { globals_ = std::make_unique<LayerGlobals>(*connection_); });
    }
    if (!globals_ || !globals_->areComplete()) return nullptr;
    return std::make_unique<LayerPanel>(*connection_, *globals_, placing);
}

}  // namespace parlivo::wayland
