// SPDX-License-Identifier: MIT
#include "audio/overlay/StrokeRasterizer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace parlivo {

namespace {

/// So many rows are computed at a time: with a fixed count the compiler uses vector instructions. The rows of
/// a thin stroke rarely need a second group.
constexpr int lanes = 4;

/// An edge that is flatter than this within a pixel column counts as this steep: the area is a quotient.
constexpr float leastRise = 1.0F / 256;

/// Twice the integral of |z| from 0 to z.
inline float integral(float z) {
    return z * std::abs(z);
}

/// A whole row, 0 to `most`; a fraction is cut off. What is not a number gives 0.
inline int clampedRow(float value, float most) {
    return static_cast<int>(std::min(most, std::max(0.0F, value)));
}

/// The next whole numbers. std::floor is a library call on processors before SSE 4.1.
inline int roundedDown(double value) {
    const auto whole = static_cast<int>(value);
    return whole > value ? whole - 1 : whole;
}
inline int roundedUp(double value) {
    const auto whole = static_cast<int>(value);
    return whole < value ? whole + 1 : whole;
}

/// Composites `colour` with `share` (of 65536) onto a premultiplied pixel, within its alpha.
QRgb composited(QRgb pixel, QRgb colour, int share) {
    const int alpha = qAlpha(pixel);
    const auto channel = [&](int below, int above) {
        const int target = alpha == 255 ? above : above * alpha / 255;
        return below + (((target - below) * share + 32768) >> 16);
    };
    return qRgba(channel(qRed(pixel), qRed(colour)), channel(qGreen(pixel), qGreen(colour)),
                 channel(qBlue(pixel), qBlue(colour)), alpha);
}

}  // namespace

/// The upper or lower edge of a band: straight, with its rise within one slice (a pixel column or a part of
/// it).
class StrokeRasterizer::Edge {
  public:
    /// `y` at the band's left end; `slope` and `rise` in pixels, positive downwards.
    Edge(float y, float slope, float rise) : y_(y), slope_(slope) {
        const float used = std::abs(rise) < leastRise ? leastRise : rise;
        half_ = used / 2;
        factor_ = 0.25F / used;
    }
    Edge(double y, double slope)
        : Edge(static_cast<float>(y), static_cast<float>(slope), static_cast<float>(slope)) {}

    Edge lowered(double distance) const {
        Edge result = *this;
        result.y_ += static_cast<float>(distance);
        return result;
    }
    Edge withinWidth(float width) const { return {y_, slope_, slope_ * width}; }

    /// The y at a place counted from the band's left end.
    float at(float place) const { return y_ + slope_ * place; }
    /// How far the edge strays within the slice from its y in the middle.
    float reach() const { return std::abs(half_); }
    /// The share of a row that lies above the edge (smaller y), on average over the slice, less one half;
    /// `middle` is the edge's y in the slice's middle, counted from the row. It is the mean of clamp(z, 0, 1)
    /// = (|z| − |z − 1| + 1) / 2, in a form without branches.
    float above(float middle) const {
        const float low = middle - half_;
        const float high = middle + half_;
        return (integral(high) - integral(high - 1) - integral(low) + integral(low - 1)) * factor_;
    }

  private:
    float y_;
    float slope_;
    float half_;    // of the rise
    float factor_;  // turns the integrals into a mean
};

/// What lies between two edges in one pixel column, or in a part of it.
class StrokeRasterizer::Slice {
  public:
    /// `place` is the slice's middle, counted from the band's left end.
    Slice(const Edge& top, const Edge& bottom, float place)
        : top_(top), bottom_(bottom), topY_(top.at(place)), bottomY_(bottom.at(place)) {}

    /// The rows of a picture of this height that the slice reaches; no others are ever computed, however far
    /// a line runs out.
    Rows rows(float height) const {
        return {clampedRow(topY_ - top_.reach(), height), clampedRow(bottomY_ + bottom_.reach() + 1, height)};
    }

    /// The share of each row that the slice covers, for `lanes` rows.
    std::array<float, lanes> areas(int firstRow) const {
        constexpr std::array<float, lanes> offsets{0, 1, 2, 3};
        const float top = topY_ - static_cast<float>(firstRow);
        const float bottom = bottomY_ - static_cast<float>(firstRow);
        std::array<float, lanes> result{};
        for (std::size_t lane = 0; lane < lanes; ++lane)
            result[lane] = bottom_.above(bottom - offsets[lane]) - top_.above(top - offsets[lane]);
        return result;
    }

  private:
    const Edge& top_;
    const Edge& bottom_;
    const float topY_;
    const float bottomY_;
};

void StrokeRasterizer::resize(QSize size) {
    size_ = size;
    // The last group of rows may run over the picture's edge.
    columnLength_ = static_cast<std::size_t>(size.height()) + lanes;
    mask_.assign(columnLength_ * static_cast<std::size_t>(size.width()), 1.0F);
    parts_.assign(columnLength_, 0.0F);
    partsRows_ = {size.height(), 0};
}

inline float* StrokeRasterizer::transmittance(int column) {
    return mask_.data() + static_cast<std::size_t>(column) * columnLength_;
}

void StrokeRasterizer::stroke(std::span<const QPointF> line, double width, double alpha) {
    if (line.size() < 2) return;
    alpha_ = static_cast<float>(alpha);
    const double radius = width / 2;
    const auto slope = [](const QPointF& from, const QPointF& to) {
        return (to.y() - from.y()) / (to.x() - from.x());
    };
    addRoundEnd(line.front(), slope(line[0], line[1]), radius, End::Left);
    for (std::size_t index = 1; index < line.size(); ++index) {
        const QPointF& from = line[index - 1];
        const QPointF& to = line[index];
        const double steepness = slope(from, to);
        const double half = radius * std::sqrt(1 + steepness * steepness);
        const Edge top(from.y() - half, steepness);
        addBand(from.x(), to.x(), top, top.lowered(2 * half));
    }
    addRoundEnd(line.back(), slope(line[line.size() - 2], line.back()), radius, End::Right);
    applyParts();
}

/// Half a disc beyond an end, sheared as the line is: a few upright bands of equal angle, from left to right.
void StrokeRasterizer::addRoundEnd(const QPointF& end, double slope, double radius, End which) {
    constexpr int bands = 4;
    constexpr double quarter = std::numbers::pi / 2;
    const double stretch = radius * std::sqrt(1 + slope * slope);
    const double from = which == End::Left ? -quarter : 0;
    const auto angle = [&](int band) { return from + quarter * band / bands; };
    const auto distance = [&](int band) { return radius * std::sin(angle(band)); };
    const auto half = [&](int band) { return stretch * std::cos(angle(band)); };
    for (int band = 0; band < bands; ++band) {
        const double fromX = distance(band);
        const double toX = distance(band + 1);
        const double y = end.y() + slope * fromX;
        const double widening = (half(band + 1) - half(band)) / (toX - fromX);
        addBand(end.x() + fromX, end.x() + toX, Edge(y - half(band), slope - widening),
                Edge(y + half(band), slope + widening));
    }
}

/// Cuts a band where pixel columns meet.
void StrokeRasterizer::addBand(double fromX, double toX, const Edge& top, const Edge& bottom) {
    const int firstWhole = roundedUp(fromX);
    const int endWhole = roundedDown(toX);
    if (firstWhole > endWhole) return addPart(endWhole, fromX, fromX, toX, top, bottom);
    if (fromX < firstWhole) addPart(firstWhole - 1, fromX, fromX, firstWhole, top, bottom);
    addColumns(std::max(firstWhole, 0), std::min(endWhole, size_.width()), fromX, top, bottom);
    if (endWhole < toX) addPart(endWhole, fromX, endWhole, toX, top, bottom);
}

/// Whole columns of a band that begins at `fromX`.
void StrokeRasterizer::addColumns(int firstColumn, int endColumn, double fromX, const Edge& topEdge,
                                  const Edge& bottomEdge) {
    const auto height = static_cast<float>(size_.height());
    const float alpha = alpha_;
    const Edge top = topEdge;  // copies of our own, which stay in registers
    const Edge bottom = bottomEdge;
    auto place = static_cast<float>(firstColumn + 0.5 - fromX);
    for (int column = firstColumn; column < endColumn; ++column, place += 1) {
        const Slice slice(top, bottom, place);
        const Rows rows = slice.rows(height);
        float* const mask = transmittance(column);
        for (int first = rows.first; first < rows.end; first += lanes) {
            const auto areas = slice.areas(first);
            for (std::size_t lane = 0; lane < lanes; ++lane)
                mask[static_cast<std::size_t>(first) + lane] *= 1 - alpha * areas[lane];
        }
    }
}

/// The part of a column from `left` to `right`.
void StrokeRasterizer::addPart(int column, double fromX, double left, double right, const Edge& top,
                               const Edge& bottom) {
    if (column < 0 || column >= size_.width()) return;
    if (column != partsColumn_) applyParts();
    partsColumn_ = column;
    const auto width = static_cast<float>(right - left);
    const Edge partTop = top.withinWidth(width);
    const Edge partBottom = bottom.withinWidth(width);
    const Slice slice(partTop, partBottom, static_cast<float>((left + right) / 2 - fromX));
    const Rows rows = slice.rows(static_cast<float>(size_.height()));
    for (int first = rows.first; first < rows.end; first += lanes) {
        const auto areas = slice.areas(first);
        for (std::size_t lane = 0; lane < lanes; ++lane)
            parts_[static_cast<std::size_t>(first) + lane] += width * areas[lane];
    }
    partsRows_ = {std::min(partsRows_.first, rows.first), std::max(partsRows_.end, rows.end)};
}

void StrokeRasterizer::applyParts() {
    if (partsRows_.first >= partsRows_.end) return;
    float* const mask = transmittance(partsColumn_);
    for (int row = partsRows_.first; row < partsRows_.end; ++row)
        mask[row] *= 1 - alpha_ * parts_[static_cast<std::size_t>(row)];
    std::fill(parts_.begin(), parts_.end(), 0.0F);
    partsRows_ = {size_.height(), 0};
}

void StrokeRasterizer::composite(QImage& picture, const QColor& colour) {
    const QRgb ink = colour.rgb();
    const auto stride = picture.bytesPerLine() / static_cast<qsizetype>(sizeof(QRgb));
    auto* const pixels = reinterpret_cast<QRgb*>(picture.bits());
    for (int column = 0; column < size_.width(); ++column) {
        const float* const mask = transmittance(column);
        for (int row = 0; row < size_.height(); ++row) {
            if (mask[row] == 1) continue;
            QRgb& pixel = pixels[row * stride + column];
            pixel = composited(pixel, ink, static_cast<int>((1 - mask[row]) * 65536));
        }
    }
    std::fill(mask_.begin(), mask_.end(), 1.0F);
}

}  // namespace parlivo
