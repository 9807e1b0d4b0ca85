// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/LayerPanels.h"

#include <wlr-layer-shell-client.h>

#include <utility>

namespace parlivo::wayland {

std::shared_ptr<LayerConnection> LayerConnection::open() {
    auto connection = WaylandConnection::open();
    if (!connection) return nullptr;
    std::shared_ptr<LayerConnection> layers(new LayerConnection(std::move(connection)));
    return layers->globals_ && layers->globals_->areComplete() ? layers : nullptr;
}

LayerConnection::LayerConnection(std::unique_ptr<WaylandConnection> connection)
    : connection_(std::move(connection)) {
    connection_->run([this] { globals_ = std::make_unique<LayerGlobals>(*connection_); });
}

LayerConnection::~LayerConnection() {
    const auto destroyAll = [this] { globals_.reset(); };
    // A broken connection has no thread any more that could use the objects.
    if (!connection_->run(destroyAll)) destroyAll();
}

LayerPanel::LayerPanel(std::shared_ptr<LayerConnection> layers, const PanelPlacing& placing)
    : layers_(std::move(layers)), placing_(placing) {
    attach();
}

LayerPanel::~LayerPanel() {
    detach();
}

void LayerPanel::attach() {
    run([this] {
        alive_ = std::make_shared<bool>(true);
        LayerGlobals& globals = layers_->globals();
        scale_ = globals.largestScale();
        globals.screenAdded = [this] {
            if (wanted_ && !surface_) map();
        };
        // Not every compositor closes what was on a screen that is gone (sway 1.10).
        globals.screenRemoved = [this] {
            if (surface_) closed();
        };
        globals.scaleChanged = [this] {
            if (surface_) surface_->updateScale();
        };
    });
}

void LayerPanel::detach() {
    const auto destroyAll = [this] {
        alive_.reset();
        moving_ = false;
        LayerGlobals& globals = layers_->globals();
        globals.screenAdded = nullptr;
        globals.screenRemoved = nullptr;
        globals.scaleChanged = nullptr;
        surface_.reset();
    };
    // A broken connection has no thread any more that could use the objects.
    if (!run(destroyAll)) destroyAll();
}

void LayerPanel::show() {
    visible_ = true;
    const auto showAnew = [this] {
        wanted_ = true;
        // Anew, on the screen that is right now.
        surface_.reset();
        map();
    };
    if (run(showAnew)) return;
    auto fresh = LayerConnection::open();
    if (!fresh) return;
    detach();
    layers_ = std::move(fresh);
    attach();
    run(showAnew);
}

void LayerPanel::hide() {
    visible_ = false;
    run([this] {
        wanted_ = false;
        surface_.reset();
    });
}

void LayerPanel::present(const QImage& frame) {
    if (!visible_) return;
    run([&] {
        if (surface_) surface_->present(frame);
    });
}

void LayerPanel::map() {
    if (!layers_->globals().hasScreen()) return;
    surface_ = std::make_unique<LayerSurface>(
        layers_->globals(), placing_,
        LayerSurface::Events{.scaled = [this](double scale) { scale_ = scale; },
                             .closed = [this] { closed(); }});
}

/// Another screen may take it. By the time of the answer the compositor has said which ones are left.
void LayerPanel::closed() {
    if (std::exchange(moving_, true)) return;
    layers_->connection().afterRequests([this, alive = std::weak_ptr(alive_)] {
        if (alive.expired()) return;
        moving_ = false;
        surface_.reset();
        if (wanted_) map();
    });
}

bool LayerPanels::isOffered(WaylandConnection& connection) {
    return connection.offers(zwlr_layer_shell_v1_interface);
}

std::unique_ptr<FloatingPanel> LayerPanels::makePanel(const PanelPlacing& placing) {
    if (!layers_) layers_ = LayerConnection::open();
    if (!layers_) return nullptr;
    return std::make_unique<LayerPanel>(layers_, placing);
}

}  // namespace parlivo::wayland
