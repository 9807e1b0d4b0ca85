// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QSize>

#include <span>
#include <vector>

namespace parlivo {

/// Draws many thin anti-aliased lines of one colour, one over the other.
///
/// Since all lines have the same colour, a pixel needs only one number: its transmittance, the product of
/// (1 − alpha · coverage) over the lines. The colour is composited onto the picture once, at the end.
/// Coverage is the exact area of a stroke within a pixel, computed column by column, which is several times
/// faster than stroking each line with QPainter's pen. Coordinates are device pixels, y downwards.
class StrokeRasterizer {
  public:
    /// Makes the mask empty and of this size.
    void resize(QSize size);

    /// Adds a line with round ends. The x of its points must increase strictly.
    void stroke(std::span<const QPointF> line, double width, double alpha);

    /// Composites the strokes onto a picture of the mask's size (premultiplied ARGB), within the alpha that
    /// the picture has, and empties the mask.
    void composite(QImage& picture, const QColor& colour);

  private:
    class Edge;
    class Slice;
    enum class End { Left, Right };
    /// Rows of one column: from `first` to before `end`.
    struct Rows {
        int first = 0;
        int end = 0;
    };

    void addRoundEnd(const QPointF& end, double slope, double radius, End which);
    void addBand(double fromX, double toX, const Edge& top, const Edge& bottom);
    void addColumns(int first, int end, double fromX, const Edge& top, const Edge& bottom);
    void addPart(int column, double fromX, double left, double right, const Edge& top, const Edge& bottom);
    void applyParts();
    float* transmittance(int column);

    QSize size_;
    float alpha_ = 0;  // of the line being drawn
    std::size_t columnLength_ = 0;
    std::vector<float> mask_;  // transmittance, column by column, with a margin below each

    // Where a stroke crosses a pixel column in several parts, their areas are added up before they count.
    std::vector<float> parts_;
    int partsColumn_ = 0;
    Rows partsRows_;
};

}  // namespace parlivo
