// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FloatingPanel.h"
#include "platform/Screens.h"

#include <QWidget>

namespace parlivo {

/// A floating panel that is a window of the toolkit's, for systems on which the toolkit can place a window
/// itself (X11, macOS).
///
/// The window is not managed by the window manager, which would keep full-screen windows above all that it
/// manages. So it also shows on every virtual desktop.
class QtFloatingPanel : public FloatingPanel {
  public:
    /// `screens` must outlive the panel.
    QtFloatingPanel(const PanelPlacing& placing, Screens& screens);

    void show() override;
    void hide() override;
    bool isVisible() const override { return window_.isVisible(); }
    Canvas canvas() const override;
    void present(const QImage& frame) override;

    const QWidget& window() const { return window_; }

  private:
    /// Shows the last picture.
    class Window : public QWidget {
      public:
        Window();
        void setPicture(const QImage& picture);

      private:
        void paintEvent(QPaintEvent* event) override;
        QImage picture_;
    };

    void place();
    void fitToDesktop();

    const PanelPlacing placing_;
    Screens& screens_;
    Corners corners_ = Corners::Transparent;
    Window window_;
};

/// Makes them.
class QtFloatingPanels : public FloatingPanels {
  public:
    /// `screens` must outlive this and the panels.
    explicit QtFloatingPanels(Screens& screens) : screens_(screens) {}

    std::unique_ptr<FloatingPanel> makePanel(const PanelPlacing& placing) override {
        return std::make_unique<QtFloatingPanel>(placing, screens_);
    }

  private:
    Screens& screens_;
};

}  // namespace parlivo
