// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FloatingPanel.h"
#include "platform/linux/wayland/LayerSurface.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <atomic>
#include <memory>

namespace parlivo::wayland {

/// A floating panel as the compositor's desktop shells make theirs: a surface of the topmost layer
/// (zwlr_layer_shell_v1), placed by the compositor, without keyboard and mouse.
class LayerPanel : public FloatingPanel {
  public:
    /// The connection must outlive this.
    LayerPanel(WaylandConnection& connection, LayerGlobals& globals, const PanelPlacing& placing);
    ~LayerPanel() override;
    LayerPanel(const LayerPanel&) = delete;
    LayerPanel& operator=(const LayerPanel&) = delete;

    void show() override;
    void hide() override;
    bool isVisible() const override { return visible_; }
    Canvas canvas() const override { return {.scale = scale_, .corners = Corners::Transparent}; }
    void present(const QImage& frame) override;

  private:
    // On the connection's thread.
    void map();
    void closed();

    WaylandConnection& connection_;
    LayerGlobals& globals_;
    const PanelPlacing placing_;
    bool visible_ = false;
    std::atomic<double> scale_ = 1;
    std::unique_ptr<LayerSurface> surface_;  // connection thread; null while hidden or without a screen
    bool wanted_ = false;                    // connection thread
    bool moving_ = false;                    // connection thread
    std::shared_ptr<const bool> alive_ = std::make_shared<bool>(true);  // connection thread
};

/// Makes them, on a connection of their own that is made with the first.
class LayerPanels : public FloatingPanels {
  public:
    /// Whether the compositor has layers.
    static bool isOffered(WaylandConnection& connection);

    LayerPanels() = default;
    ~LayerPanels() override;
    LayerPanels(const LayerPanels&) = delete;
    LayerPanels& operator=(const LayerPanels&) = delete;

    std::unique_ptr<FloatingPanel> makePanel(const PanelPlacing& placing) override;

  private:
    std::unique_ptr<WaylandConnection> connection_;
    std::unique_ptr<LayerGlobals> globals_;
};

}  // namespace parlivo::wayland
