// SPDX-License-Identifier: MIT
#include "audio/overlay/WaveformPainter.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <cstring>
#include <numbers>

namespace parlivo {

namespace {

constexpr double cornerRadius = WaveformPainter::cornerRadius;
constexpr QColor cardTop(244, 240, 231);
constexpr QColor cardMiddle(239, 234, 223);
constexpr QColor cardBottom(234, 228, 215);
constexpr double highlightAlpha = 0.7;
constexpr double highlightWidth = 1.5;
constexpr double borderAlpha = 0.06;

constexpr QColor strandColour(66, 60, 53);
constexpr double strandWidth = 0.7;
constexpr QColor centreColour(56, 50, 43);
constexpr double centreAlpha = 0.62;
constexpr double centreWidth = 1.2;

QColor withAlpha(Qt::GlobalColor colour, double alpha) {
    QColor result(colour);
    result.setAlphaF(static_cast<float>(alpha));
    return result;
}

QLinearGradient cardGradient(double height) {
    QLinearGradient gradient(0, 0, 0, height);
    gradient.setStops({{0, cardTop}, {0.55, cardMiddle}, {1, cardBottom}});
    return gradient;
}

/// The card without the ribbon, with square corners.
QImage cardSurface(QSizeF size, double scale, QSize pixels) {
    QImage surface(pixels, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&surface);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    const QRectF bounds(QPointF(), size);
    painter.fillRect(QRectF(QPointF(), QSizeF(pixels)), cardGradient(size.height()));
    painter.setPen(QPen(withAlpha(Qt::white, highlightAlpha), highlightWidth, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(QPointF(cornerRadius, 0.75), QPointF(size.width() - cornerRadius, 0.75));
    painter.setPen(QPen(withAlpha(Qt::black, borderAlpha), 1));
    painter.drawRoundedRect(bounds, cornerRadius, cornerRadius);
    return surface;
}

QImage withRoundCorners(const QImage& surface, QSizeF size, double scale) {
    QImage card(surface.size(), QImage::Format_ARGB32_Premultiplied);
    card.fill(Qt::transparent);
    QPainter painter(&card);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(QRectF(QPointF(), size), cornerRadius, cornerRadius);
    painter.resetTransform();
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.drawImage(0, 0, surface);
    return card;
}

QSize pixelSize(QSizeF size, double scale) {
    return {static_cast<int>(std::ceil(size.width() * scale)),
            static_cast<int>(std::ceil(size.height() * scale))};
}

}  // namespace

const QImage& WaveformPainter::frame(QSizeF size, double scale, FloatingPanel::Corners corners,
                                     double seconds, double level, double rest) {
    if (const Setting setting{size, scale, corners}; setting != setting_) {
        setting_ = setting;
        drawCard();
    }
    std::memcpy(frame_.bits(), card_.constBits(), static_cast<std::size_t>(card_.sizeInBytes()));
    rest_ = rest;
    geometry_.update(size, seconds, level);
    // At rest all strands lie under the centre line.
    if (rest < 1) drawStrands(scale);
    drawCentreLine(scale);
    if (rest > 0) dimCard(seconds);
    frame_.setDevicePixelRatio(scale);
    return frame_;
}

void WaveformPainter::drawCard() {
    const auto& [size, scale, corners] = setting_;
    const QSize pixels = pixelSize(size, scale);
    card_ = cardSurface(size, scale, pixels);
    if (corners == FloatingPanel::Corners::Transparent) card_ = withRoundCorners(card_, size, scale);
    frame_ = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    rasterizer_.resize(pixels);
}

void WaveformPainter::drawStrands(double scale) {
    for (const Strand& strand : strands_)
        rasterizer_.stroke(inPixels(geometry_.strand(strand), scale), strandWidth * scale,
                           WaveformGeometry::strandAlpha(strand));
    rasterizer_.composite(frame_, strandColour);
}

void WaveformPainter::drawCentreLine(double scale) {
    rasterizer_.stroke(inPixels(geometry_.centreLine(), scale), centreWidth * scale, centreAlpha);
    rasterizer_.composite(frame_, centreColour);
}

/// The card breathes, so that a still picture does not look like a program that hangs.
void WaveformPainter::dimCard(double seconds) {
    constexpr double breath = 2.4;  // seconds
    constexpr double darkest = 0.14;
    constexpr double brightest = 0.05;
    const double phase = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * seconds / breath);
    QPainter painter(&frame_);
    painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    painter.fillRect(frame_.rect(),
                     withAlpha(Qt::black, rest_ * (brightest + (darkest - brightest) * phase)));
}

std::span<const QPointF> WaveformPainter::inPixels(std::span<const QPointF> line, double scale) {
    line_.clear();
    const double base = WaveformGeometry::baseLine(setting_.size.height());
    for (const QPointF& point : line)
        line_.emplace_back(point.x() * scale, (base + (point.y() - base) * (1 - rest_)) * scale);
    return line_;
}

}  // namespace parlivo
