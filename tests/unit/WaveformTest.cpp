// SPDX-License-Identifier: MIT
#include "audio/overlay/StrokeRasterizer.h"
#include "audio/overlay/WaveformGeometry.h"
#include "audio/overlay/WaveformPainter.h"
#include "audio/overlay/WaveformView.h"
#include "support/ReferenceWaveform.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <algorithm>
#include <numbers>

namespace parlivo {
namespace {

using Corners = FloatingPanel::Corners;
using testing::DoubleNear;
using testing::Each;
using testing::SizeIs;

constexpr QSizeF panel(240, 84);

std::vector<reference::Moment> moments() {
    std::vector<reference::Moment> all;
    for (const QSizeF size : {panel, QSizeF(480, 168), QSizeF(301, 97)})
        for (const double seconds : {0.0, 0.31, 12.5, 3600.0})
            for (const double level : {0.0, 0.2, 0.6, 1.0}) all.push_back({size, seconds, level});
    return all;
}

void expectLine(std::span<const QPointF> points, const reference::Moment& moment, const reference::Line& line,
                double step) {
    const auto abscissae = reference::abscissae(moment.size.width(), step);
    ASSERT_EQ(points.size(), abscissae.size());
    for (std::size_t index = 0; index < points.size(); ++index) {
        EXPECT_EQ(points[index].x(), abscissae[index]);
        const double fromBottom = line.yAt(moment, abscissae[index]);
        ASSERT_NEAR(points[index].y(), moment.size.height() - fromBottom, 1e-9)
            << "x " << abscissae[index] << ", t " << moment.seconds << ", level " << moment.level;
    }
}

TEST(WaveformGeometryTest, CentreLineFollowsTheFormulas) {
    WaveformGeometry geometry;
    for (const auto& moment : moments()) {
        geometry.update(moment.size, moment.seconds, moment.level);
        expectLine(geometry.centreLine(), moment, reference::centreLine(), 2);
    }
}

TEST(WaveformGeometryTest, StrandsFollowTheFormulas) {
    WaveformGeometry geometry;
    const auto strands = WaveformGeometry::makeStrands();
    for (const auto& moment : moments()) {
        geometry.update(moment.size, moment.seconds, moment.level);
        for (const int index : {0, 1, 20, 31, 32, 33, 63})
            expectLine(geometry.strand(strands.at(static_cast<std::size_t>(index))), moment,
                       reference::strand(index), 3);
    }
}

TEST(WaveformGeometryTest, SixtyFourStrandsGoFromEdgeToEdge) {
    const auto strands = WaveformGeometry::makeStrands();
    EXPECT_THAT(strands, SizeIs(64));
    EXPECT_EQ(strands.front().u, -1);
    EXPECT_EQ(strands.back().u, 1);
    EXPECT_NEAR(strands[21].u, 2 * (21 / 63.0) - 1, 1e-15);
    EXPECT_NEAR(strands[21].ph, 50.379, 1e-12);
}

TEST(WaveformGeometryTest, MiddleStrandsAreDarkest) {
    EXPECT_NEAR(WaveformGeometry::strandAlpha({.u = 0}), 0.11, 1e-12);
    EXPECT_NEAR(WaveformGeometry::strandAlpha({.u = 1}), 0.03 + 0.08 * std::exp(-1.8225), 1e-12);
    EXPECT_EQ(WaveformGeometry::strandAlpha({.u = -0.5}), WaveformGeometry::strandAlpha({.u = 0.5}));
}

TEST(WaveformGeometryTest, ASilentRibbonStillMovesAndFansOut) {
    WaveformGeometry geometry;
    geometry.update(panel, 0, 0);
    const auto before = geometry.centreLine();
    const std::vector<QPointF> first(before.begin(), before.end());
    geometry.update(panel, 1, 0);
    const auto later = geometry.centreLine();
    EXPECT_FALSE(std::equal(first.begin(), first.end(), later.begin()));

    const auto strands = WaveformGeometry::makeStrands();
    const auto heightAtHump = [&](const Strand& strand) {
        const auto points = geometry.strand(strand);
        return std::ranges::max_element(points, {}, &QPointF::y)->y();
    };
    EXPECT_GT(heightAtHump(strands.back()) - heightAtHump(strands.front()), 10);
}

TEST(WaveformLevelTest, RisesFastAndFallsGently) {
    EXPECT_DOUBLE_EQ(WaveformView::smoothed(0, 1), 0.5);
    EXPECT_DOUBLE_EQ(WaveformView::smoothed(0.5, 1), 0.75);
    EXPECT_DOUBLE_EQ(WaveformView::smoothed(1, 0), 0.9);
    EXPECT_DOUBLE_EQ(WaveformView::smoothed(0.9, 0.4), 0.85);
    EXPECT_DOUBLE_EQ(WaveformView::smoothed(0.4, 0.4), 0.4);
}

/// The line in black on white.
QImage coverage(QSize size, std::span<const QPointF> line, double width) {
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::white);
    StrokeRasterizer rasterizer;
    rasterizer.resize(size);
    rasterizer.stroke(line, width, 1);
    rasterizer.composite(picture, Qt::black);
    return picture;
}

int darknessAt(const QImage& picture, int x, int y) {
    return 255 - qBlue(picture.pixel(x, y));
}

TEST(StrokeRasterizerTest, CoversExactlyTheAreaOfALevelStroke) {
    const std::vector<QPointF> line{{2, 5.25}, {18, 5.25}};
    const QImage picture = coverage({20, 10}, line, 1.5);
    EXPECT_EQ(darknessAt(picture, 10, 3), 0);
    EXPECT_NEAR(darknessAt(picture, 10, 4), 127.5, 0.5);
    EXPECT_EQ(darknessAt(picture, 10, 5), 255);
    EXPECT_EQ(darknessAt(picture, 10, 6), 0);
}

TEST(StrokeRasterizerTest, CoversExactlyTheAreaOfASlantingStroke) {
    // At 45° a stroke of width √2 is two pixels high: within a column it fills the middle row but two
    // corners of an eighth, and half of it spills evenly into the rows above and below.
    const std::vector<QPointF> line{{2, 2}, {18, 18}};
    const QImage picture = coverage({20, 20}, line, std::numbers::sqrt2);
    EXPECT_NEAR(darknessAt(picture, 10, 10), 255, 1);
    EXPECT_NEAR(darknessAt(picture, 10, 9), 127, 1);
    EXPECT_NEAR(darknessAt(picture, 10, 11), 127, 1);
    EXPECT_EQ(darknessAt(picture, 10, 8), 0);
}

TEST(StrokeRasterizerTest, RoundsTheEnds) {
    const std::vector<QPointF> line{{10, 10}, {30, 10}};
    const QImage picture = coverage({40, 20}, line, 8);
    double area = 0;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 10; ++x) area += darknessAt(picture, x, y) / 255.0;
    EXPECT_NEAR(area, std::numbers::pi * 16 / 2, 0.8);
    EXPECT_EQ(darknessAt(picture, 5, 10), 0);
}

TEST(StrokeRasterizerTest, PartsOfAStrokeInOnePixelAddUp) {
    const std::vector<QPointF> whole{{2, 5.5}, {18, 5.5}};
    const std::vector<QPointF> parts{{2, 5.5}, {9.3, 5.5}, {9.6, 5.5}, {18, 5.5}};
    EXPECT_EQ(coverage({20, 10}, whole, 1), coverage({20, 10}, parts, 1));
}

TEST(StrokeRasterizerTest, WhatRunsOutOfThePictureIsCutOff) {
    const std::vector<QPointF> line{{-10, -400}, {10, 5}, {15, 900}, {60, -900}};
    const QImage picture = coverage({20, 10}, line, 2);
    EXPECT_EQ(darknessAt(picture, 10, 5), 255);
    EXPECT_EQ(darknessAt(picture, 1, 5), 0);
}

TEST(StrokeRasterizerTest, StaysWithinWhatIsPaintedAlready) {
    QImage picture(20, 10, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    picture.setPixel(10, 5, qRgba(64, 64, 64, 128));
    StrokeRasterizer rasterizer;
    rasterizer.resize(picture.size());
    const std::vector<QPointF> line{{0, 5.5}, {20, 5.5}};
    rasterizer.stroke(line, 3, 1);
    rasterizer.composite(picture, Qt::white);
    EXPECT_EQ(picture.pixel(9, 5), 0U);
    EXPECT_EQ(qAlpha(picture.pixel(10, 5)), 128);
    EXPECT_EQ(qRed(reinterpret_cast<const QRgb*>(picture.constScanLine(5))[10]), 128) << "premultiplied";
}

struct Difference {
    double mean = 0;
    int most = 0;
};

Difference difference(const QImage& one, const QImage& other) {
    EXPECT_EQ(one.size(), other.size());
    Difference result;
    for (int y = 0; y < one.height(); ++y) {
        const uchar* a = one.constScanLine(y);
        const uchar* b = other.constScanLine(y);
        for (int index = 0; index < one.width() * 4; ++index) {
            const int distance = std::abs(a[index] - b[index]);
            result.mean += distance;
            result.most = std::max(result.most, distance);
        }
    }
    result.mean /= one.width() * one.height() * 4;
    return result;
}

TEST(WaveformPainterTest, LooksLikeTheSameLinesStrokedByQPainter) {
    WaveformPainter painter;
    for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        for (const double level : {0.0, 0.6, 1.0}) {
            const QImage ours = painter.frame(panel, scale, Corners::Transparent, 3.7, level);
            const auto [mean, most] = difference(ours, reference::picture({panel, 3.7, level}, scale));
            EXPECT_LT(mean, 0.4) << "scale " << scale << ", level " << level;
            // QPainter rounds each of the 64 strands to 8 bits, and its corners of steep lines stray most.
            EXPECT_LT(most, 40) << "scale " << scale << ", level " << level;
        }
    }
}

TEST(WaveformPainterTest, PaintsTheCardInItsColours) {
    WaveformPainter painter;
    const QImage card = painter.frame(panel, 2, Corners::Transparent, 0, 0);
    EXPECT_EQ(card.size(), QSize(480, 168));
    EXPECT_EQ(qAlpha(card.pixel(0, 0)), 0) << "outside the round corner";
    const QColor top = card.pixelColor(240, 5);
    EXPECT_NEAR(top.red(), 244, 1);
    EXPECT_NEAR(top.green(), 240, 1);
    EXPECT_NEAR(top.blue(), 231, 1);
    const QColor bottom = card.pixelColor(240, 164);
    EXPECT_NEAR(bottom.red(), 234, 1);
    EXPECT_NEAR(bottom.green(), 228, 1);
    EXPECT_NEAR(bottom.blue(), 215, 1);
    const QColor highlight = card.pixelColor(240, 1);
    EXPECT_GT(highlight.blue(), 245) << "the white line below the upper edge";
    EXPECT_LT(card.pixelColor(0, 84).blue(), card.pixelColor(4, 84).blue()) << "the border darkens the edge";
}

TEST(WaveformPainterTest, FillsTheCornersThatAreCutAway) {
    WaveformPainter painter;
    const QImage card = painter.frame(panel, 1, Corners::CutAway, 0, 0);
    for (const QPoint corner : {QPoint(0, 0), QPoint(239, 0), QPoint(0, 83), QPoint(239, 83)})
        EXPECT_EQ(qAlpha(card.pixel(corner)), 255);
}

TEST(WaveformPainterTest, DrawsTheCardAnewWhenTheScaleChanges) {
    WaveformPainter painter;
    const QImage large = painter.frame(panel, 1, Corners::Transparent, 0, 0);
    const QImage small = painter.frame(panel / 2, 2, Corners::Transparent, 0, 0);
    ASSERT_EQ(small.size(), large.size());
    EXPECT_EQ(qAlpha(large.pixel(5, 7)), 255);
    EXPECT_EQ(qAlpha(small.pixel(5, 7)), 0) << "the corner is twice as round";
}

TEST(WaveformPainterTest, ASingleStrandHasItsColour) {
    QImage picture(20, 10, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::white);
    StrokeRasterizer rasterizer;
    rasterizer.resize(picture.size());
    const std::vector<QPointF> line{{0, 5.5}, {20, 5.5}};
    rasterizer.stroke(line, 1, WaveformGeometry::strandAlpha({.u = 0}));
    rasterizer.composite(picture, QColor(66, 60, 53));
    EXPECT_NEAR(qRed(picture.pixel(10, 5)), 255 - 0.11 * (255 - 66), 0.6);
    EXPECT_NEAR(qBlue(picture.pixel(10, 5)), 255 - 0.11 * (255 - 53), 0.6);
}

}  // namespace
}  // namespace parlivo
