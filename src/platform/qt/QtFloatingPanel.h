// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FloatingPanel.h"
#include "platform/Screens.h"
#include "platform/qt/PanelGround.h"

#include <QWidget>

namespace parlivo {

/// A floating panel that is a window of the toolkit's, for systems on which the toolkit can place a window
/// itself (X11, macOS).
///
/// The window is not managed by the window manager, which would keep full-screen windows above all that it
/// manages. So it also shows on every virtual desktop.
class QtFloatingPanel : public FloatingPanel {
  public:
    /// Who gives the panel its shadow.
    enum class Shadow {
        Drawn,     ///< the panel itself; without a compositing manager a thin edge stands in for it
        BySystem,  ///< the window server
    };

    /// `screens` must outlive the panel.
    QtFloatingPanel(const PanelPlacing& placing, Screens& screens, Shadow shadow = Shadow::Drawn);

    void show() override;
    void hide() override;
    bool isVisible() const override { return window_.isVisible(); }
    Canvas canvas() const override;
    void present(const QImage& frame) override;

    const QWidget& window() const { return window_; }
    /// Where the panel itself is, without its shadow and edge.
    QRect geometry() const;

  private:
    /// Shows the last picture on its ground.
    class Window : public QWidget {
      public:
        Window();
        void setPicture(const QImage& picture);
        /// `ground` lies under and around the pictures, which begin at `margin` from the left and the top,
        /// `edge` over all. Both may be null.
        void setSurroundings(const QImage& ground, const QImage& edge, int margin);

      private:
        void paintEvent(QPaintEvent* event) override;
        QImage picture_;
        QImage ground_;
        QImage edge_;
        int margin_ = 0;
    };

    void place();
    void fitToDesktop();
    void becomeTransparent();
    void becomeCutOut();
    PanelShape shape(int margin) const { return {placing_.size, placing_.cornerRadius, margin}; }

    const PanelPlacing placing_;
    Screens& screens_;
    const Shadow shadow_;
    int margin_ = 0;
    bool cutOut_ = false;  ///< round by its shape, on a picture of what lies behind it
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
