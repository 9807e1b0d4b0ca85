// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FloatingPanel.h"
#include "platform/linux/wayland/LayerSurface.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <atomic>
#include <memory>

namespace parlivo::wayland {

/// A connection for panels, with what the compositor offers for them.
class LayerConnection {
  public:
    /// Null if there is no compositor, or one without layers.
    static std::shared_ptr<LayerConnection> open();
    ~LayerConnection();
    LayerConnection(const LayerConnection&) = delete;
    LayerConnection& operator=(const LayerConnection&) = delete;

    WaylandConnection& connection() { return *connection_; }
    /// Connection thread.
    LayerGlobals& globals() { return *globals_; }

  private:
    explicit LayerConnection(std::unique_ptr<WaylandConnection> connection);

    std::unique_ptr<WaylandConnection> connection_;
    std::unique_ptr<LayerGlobals> globals_;
};

/// A floating panel as the compositor's desktop shells make theirs: a surface of the topmost layer
/// (zwlr_layer_shell_v1), placed by the compositor, without keyboard and mouse. A compositor that is started
/// anew is connected to when it is shown.
class LayerPanel : public FloatingPanel {
  public:
    LayerPanel(std::shared_ptr<LayerConnection> layers, const PanelPlacing& placing);
    ~LayerPanel() override;
    LayerPanel(const LayerPanel&) = delete;
    LayerPanel& operator=(const LayerPanel&) = delete;

    void show() override;
    void hide() override;
    bool isVisible() const override { return visible_; }
    Canvas canvas() const override { return {.scale = scale_, .corners = Corners::Transparent}; }
    void present(const QImage& frame) override;

  private:
    bool run(const WaylandConnection::Job& job) { return layers_->connection().run(job); }
    void attach();
    void detach();

    // On the connection's thread.
    void map();
    void closed();

    std::shared_ptr<LayerConnection> layers_;
    const PanelPlacing placing_;
    bool visible_ = false;
    std::atomic<double> scale_ = 1;
    std::unique_ptr<LayerSurface> surface_;  // connection thread; null while hidden or without a screen
    bool wanted_ = false;                    // connection thread
    bool moving_ = false;                    // connection thread
    std::shared_ptr<const bool> alive_;      // connection thread; while attached
};

/// Makes them, on a connection of their own that is made with the first.
class LayerPanels : public FloatingPanels {
  public:
    /// Whether the compositor has layers.
    static bool isOffered(WaylandConnection& connection);

    std::unique_ptr<FloatingPanel> makePanel(const PanelPlacing& placing) override;

  private:
    std::shared_ptr<LayerConnection> layers_;
};

}  // namespace parlivo::wayland
