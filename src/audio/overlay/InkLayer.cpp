#include "audio/overlay/InkLayer.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace parlivo {

namespace {

/// Rows are worked on in blocks of this many, so that a compiler can use vector instructions.
constexpr int blockLength = 8;
/// Rows above and below the picture: what runs out of it is clamped into the middle of the margin.
constexpr int margin = 2 * blockLength;

/// Sides flatter than this within a pixel are taken for as steep as this: the area is a quotient.
constexpr double leastRise = 1.0 / 512;

/// The straight side of a slice, prepared for the areas below it.
struct Edge {
    float left;
    float right;
    float perRise;

    Edge(double leftY, double rightY) {
        if (std::abs(rightY - leftY) < leastRise) {
            const double middle = (leftY + rightY) / 2;
            leftY = middle - leastRise / 2;
            rightY = middle + leastRise / 2;
        }
        left = static_cast<float>(leftY);
        right = static_cast<float>(rightY);
        perRise = 1 / (right - left);
    }

    /// The share of the row from `row` to `row` + 1 that lies above the side (smaller y).
    float above(float row) const { return (integral(right - row) - integral(left - row)) * perRise; }

    /// The integral of clamp(z, 0, 1) from minus infinity.
    static float integral(float z) {
        const float lower = z > 0 ? z : 0;
        const float within = lower < 1 ? lower : 1;
        return within * within * 0.5F + (lower - within);
    }
};

int floorOf(double value) {
    return static_cast<int>(std::floor(value));
}

/// `colour` laid with `share` (of 65536) over a premultiplied pixel, within its alpha.
QRgb mixed(QRgb pixel, QRgb colour, int share) {
    const int alpha = qAlpha(pixel);
    const auto channel = [&](int below, int above) {
        const int target = alpha == 255 ? above : above * alpha / 255;
        return below + (((target - below) * share + 32768) >> 16);
    };
    return qRgba(channel(qRed(pixel), qRed(colour)), channel(qGreen(pixel), qGreen(colour)),
                 channel(qBlue(pixel), qBlue(colour)), alpha);
}

}  // namespace

void InkLayer::resize(QSize size) {
    size_ = size;
    const int length = size.height() + 2 * margin;
    columnLength_ = static_cast<std::size_t>(length);
    ground_.assign(columnLength_ * static_cast<std::size_t>(size.width()), 1.0F);
    inked_.assign(static_cast<std::size_t>(size.width()), Range{size.height(), 0});
    parts_.assign(columnLength_, 0.0F);
    partsRange_ = {size.height(), 0};
}

float* InkLayer::rows(int column) {
    return ground_.data() + static_cast<std::size_t>(column) * columnLength_ + margin;
}

void InkLayer::stroke(std::span<const QPointF> line, double width, double alpha) {
    if (line.size() < 2) return;
    alpha_ = static_cast<float>(alpha);
    const double radius = width / 2;
    const auto slope = [](const QPointF& from, const QPointF& to) {
        return (to.y() - from.y()) / (to.x() - from.x());
    };
    roundEnd(line.front(), slope(line[0], line[1]), radius, End::Left);
    for (std::size_t index = 1; index < line.size(); ++index)
        strokeSegment(line[index - 1], line[index], radius);
    roundEnd(line.back(), slope(line[line.size() - 2], line.back()), radius, End::Right);
    applyParts();
}

void InkLayer::strokeSegment(const QPointF& from, const QPointF& to, double radius) {
    const double slope = (to.y() - from.y()) / (to.x() - from.x());
    const double half = radius * std::sqrt(1 + slope * slope);
    addBand(from.x(), to.x(), {from.y() - half, to.y() - half}, {from.y() + half, to.y() + half});
}

/// Half a disc beyond an end, sheared as the line is: a few upright bands of equal angle, from the left to
/// the right.
void InkLayer::roundEnd(const QPointF& end, double slope, double radius, End which) {
    constexpr int bands = 4;
    constexpr double quarter = std::numbers::pi / 2;
    const double stretch = radius * std::sqrt(1 + slope * slope);
    const double from = which == End::Left ? -quarter : 0;
    const auto angle = [&](int band) { return from + quarter * band / bands; };
    const auto distance = [&](int band) { return radius * std::sin(angle(band)); };
    const auto half = [&](int band) { return stretch * std::cos(angle(band)); };
    for (int band = 0; band < bands; ++band) {
        const double leftY = end.y() + slope * distance(band);
        const double rightY = end.y() + slope * distance(band + 1);
        addBand(end.x() + distance(band), end.x() + distance(band + 1),
                {leftY - half(band), rightY - half(band + 1)}, {leftY + half(band), rightY + half(band + 1)});
    }
}

/// Cuts a band where pixel columns meet.
void InkLayer::addBand(double fromX, double toX, Side top, Side bottom) {
    const double length = toX - fromX;
    const auto cut = [&](const Side& side, double x) {
        return side.left + (side.right - side.left) * (x - fromX) / length;
    };
    const int end = std::min(static_cast<int>(std::ceil(toX)), size_.width());
    for (int column = std::max(floorOf(fromX), 0); column < end; ++column) {
        const double left = std::max<double>(column, fromX);
        const double right = std::min<double>(column + 1, toX);
        addSlice(column, right - left, {cut(top, left), cut(top, right)},
                 {cut(bottom, left), cut(bottom, right)});
    }
}

void InkLayer::addSlice(int column, double width, Side top, Side bottom) {
    const auto clamped = [this](double y) {
        return std::clamp<double>(y, -blockLength, size_.height() + blockLength - 1);
    };
    const Edge upper(clamped(top.left), clamped(top.right));
    const Edge lower(clamped(bottom.left), clamped(bottom.right));
    const int first = floorOf(std::min(upper.left, upper.right));
    const int end = floorOf(std::max(lower.left, lower.right)) + 1;
    const auto forEachRow = [&](const auto& take) {
        for (int block = first; block < end; block += blockLength) {
            for (int row = block; row < block + blockLength; ++row) {
                const auto y = static_cast<float>(row);
                take(row, lower.above(y) - upper.above(y));
            }
        }
    };
    if (width == 1) {
        forEachRow([ground = rows(column), alpha = alpha_](int row, float area) {
            ground[row] *= 1 - alpha * area;
        });
        widen(column, first, end);
        return;
    }
    if (column != partsColumn_) applyParts();
    partsColumn_ = column;
    forEachRow([parts = parts_.data() + margin, share = static_cast<float>(width)](int row, float area) {
        parts[row] += share * area;
    });
    partsRange_ = {std::min(partsRange_.first, first), std::max(partsRange_.end, end)};
}

void InkLayer::applyParts() {
    if (partsRange_.first >= partsRange_.end) return;
    float* const ground = rows(partsColumn_);
    float* const parts = parts_.data() + margin;
    for (int row = partsRange_.first; row < partsRange_.end; ++row) ground[row] *= 1 - alpha_ * parts[row];
    std::fill(parts + partsRange_.first, parts + partsRange_.end, 0.0F);
    widen(partsColumn_, partsRange_.first, partsRange_.end);
    partsRange_ = {size_.height(), 0};
}

void InkLayer::widen(int column, int first, int end) {
    Range& range = inked_[static_cast<std::size_t>(column)];
    range.first = std::min(range.first, first);
    range.end = std::max(range.end, end);
}

void InkLayer::flowOnto(QImage& picture, const QColor& colour) {
    const QRgb ink = colour.rgb();
    const auto stride = picture.bytesPerLine() / static_cast<qsizetype>(sizeof(QRgb));
    auto* const pixels = reinterpret_cast<QRgb*>(picture.bits());
    for (int column = 0; column < size_.width(); ++column) {
        Range& range = inked_[static_cast<std::size_t>(column)];
        if (range.first >= range.end) continue;
        float* const ground = rows(column);
        const int end = std::min(range.end, size_.height());
        for (int row = std::max(range.first, 0); row < end; ++row) {
            QRgb& pixel = pixels[row * stride + column];
            pixel = mixed(pixel, ink, static_cast<int>((1 - ground[row]) * 65536));
        }
        std::fill(ground + range.first, ground + range.end, 1.0F);
        range = {size_.height(), 0};
    }
}

}  // namespace parlivo
