// SPDX-License-Identifier: MIT
#pragma once

#include "audio/overlay/StrokeRasterizer.h"
#include "audio/overlay/WaveformGeometry.h"
#include "platform/FloatingPanel.h"

#include <QImage>
#include <QSizeF>

namespace parlivo {

/// Draws the card with the ribbon, frame after frame, into a picture of its own.
class WaveformPainter {
  public:
    /// Of the card.
    static constexpr double cornerRadius = 20;

    /// The frame at one moment: the view's size, device pixels a unit, the seconds since the animation began
    /// and the smoothed level (0–1). `rest` (0–1) tells how far the ribbon has come to rest because nobody is
    /// listening any more: at 1 it is a straight line, on a card that dims and brightens. The picture stays
    /// valid until the next frame. Allocates only when the size, the scale or the corners change.
    const QImage& frame(QSizeF size, double scale, FloatingPanel::Corners corners, double seconds,
                        double level, double rest = 0);

  private:
    /// What the card depends on.
    struct Setting {
        QSizeF size;
        double scale = 0;
        FloatingPanel::Corners corners = FloatingPanel::Corners::Transparent;

        bool operator==(const Setting&) const = default;
    };

    void drawCard();
    void drawStrands(double scale);
    void dimCard(double seconds);
    void drawCentreLine(double scale);
    std::span<const QPointF> inPixels(std::span<const QPointF> line, double scale);

    std::array<Strand, WaveformGeometry::strandCount> strands_ = WaveformGeometry::makeStrands();
    WaveformGeometry geometry_;
    StrokeRasterizer rasterizer_;
    std::vector<QPointF> line_;
    QImage card_;
    QImage frame_;
    double rest_ = 0;
    Setting setting_;
};

}  // namespace parlivo
