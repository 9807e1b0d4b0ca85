// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QSize>

#include <memory>

namespace parlivo {

/// The shape of a panel and its place on the main screen: in the middle, `aboveEdge` above the lower edge of
/// what docks and panels leave of the screen. Device-independent pixels.
struct PanelPlacing {
    QSize size;
    int aboveEdge = 0;
    double cornerRadius = 0;
};

/// A small picture that floats above all windows, full-screen ones too. It never takes the keyboard focus,
/// and the mouse goes through it. Main thread.
class FloatingPanel {
  public:
    /// Who makes the corners round.
    enum class Corners {
        Transparent,  ///< the frame itself, by transparent pixels
        CutAway,      ///< the panel cuts them off: the frame fills them
    };
    /// What a frame is drawn for.
    struct Canvas {
        double scale = 1;  ///< device pixels per device-independent pixel
        Corners corners = Corners::Transparent;
    };

    virtual ~FloatingPanel() = default;

    /// Puts the panel on the screen, at the place that is right now. Where there is no screen it keeps its
    /// last place.
    virtual void show() = 0;
    virtual void hide() = 0;
    virtual bool isVisible() const = 0;

    virtual Canvas canvas() const = 0;
    /// Shows a frame of the placing's size times the canvas's scale, format ARGB32_Premultiplied. The picture
    /// is the caller's; it is drawn or copied before this returns.
    virtual void present(const QImage& frame) = 0;
};

/// Makes floating panels. Main thread.
class FloatingPanels {
  public:
    virtual ~FloatingPanels() = default;

    /// Null where the desktop has no way to show a panel without giving it the focus.
    virtual std::unique_ptr<FloatingPanel> makePanel(const PanelPlacing& placing) = 0;
};

}  // namespace parlivo
