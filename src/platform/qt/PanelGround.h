// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QRegion>
#include <QSize>

/// What lies around and under a floating panel's frames: its shadow, and a thin dark edge that sets the panel
/// off from a page as bright as itself.
namespace parlivo {

/// A panel with round corners in the middle of a window that is `margin` larger on each side.
/// Device-independent pixels.
struct PanelShape {
    QSize size;
    double cornerRadius = 0;
    int margin = 0;

    QSize windowSize() const { return size + QSize(2 * margin, 2 * margin); }
    bool operator==(const PanelShape&) const = default;
};

/// How much room a shadow takes on each side.
inline constexpr int shadowMargin = 24;

/// The shadow and the edge on a transparent ground, at `scale` device pixels a unit, format
/// ARGB32_Premultiplied.
QImage shadowGround(const PanelShape& shape, double scale);

/// The edge alone, on the panel's outermost pixels: for a window without room around the panel.
QImage innerEdge(const PanelShape& shape, double scale);

/// All that the panel covers, also in part.
QRegion coveredRegion(const PanelShape& shape);

}  // namespace parlivo
