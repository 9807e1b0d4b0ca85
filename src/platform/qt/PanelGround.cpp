// SPDX-License-Identifier: MIT
#include "platform/qt/PanelGround.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace parlivo {

namespace {

// The shadow lies a little below the panel and fades over this distance.
constexpr double shadowDrop = 4;
constexpr double shadowFade = 9;
constexpr double shadowAlpha = 0.30;
/// Dark enough that the panel's bright edge stands out from white by 1.5:1 and more.
constexpr double edgeAlpha = 0.30;
constexpr double edgeWidth = 1;

QImage emptyPicture(const PanelShape& shape, double scale) {
    const QSizeF size = QSizeF(shape.windowSize()) * scale;
    QImage picture(static_cast<int>(std::ceil(size.width())), static_cast<int>(std::ceil(size.height())),
                   QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    return picture;
}

/// How far a point lies outside a rectangle with round corners that has its middle at the origin; 0 within.
double distanceOutside(double x, double y, const PanelShape& shape) {
    const double dx = std::max(std::abs(x) - (shape.size.width() / 2.0 - shape.cornerRadius), 0.0);
    const double dy = std::max(std::abs(y) - (shape.size.height() / 2.0 - shape.cornerRadius), 0.0);
    return std::max(std::hypot(dx, dy) - shape.cornerRadius, 0.0);
}

void drawShadow(QImage& picture, const PanelShape& shape, double scale) {
    for (int row = 0; row < picture.height(); ++row) {
        auto* const pixels = reinterpret_cast<QRgb*>(picture.scanLine(row));
        const double y = (row + 0.5) / scale - shape.windowSize().height() / 2.0 - shadowDrop;
        for (int column = 0; column < picture.width(); ++column) {
            const double x = (column + 0.5) / scale - shape.windowSize().width() / 2.0;
            const double distance = distanceOutside(x, y, shape) / shadowFade;
            pixels[column] =
                qRgba(0, 0, 0, static_cast<int>(255 * shadowAlpha * std::exp(-distance * distance)));
        }
    }
}

QColor darkEdge() {
    QColor dark(Qt::black);
    dark.setAlphaF(static_cast<float>(edgeAlpha));
    return dark;
}

/// The panel's outline, larger by `around` on each side.
void drawPanel(QPainter& painter, const PanelShape& shape, double around) {
    const QRectF panel(QPointF(shape.margin, shape.margin), QSizeF(shape.size));
    painter.drawRoundedRect(panel.adjusted(-around, -around, around, around), shape.cornerRadius + around,
                            shape.cornerRadius + around);
}

/// Around the panel, whose own pixels hide all but the rim of what is drawn here.
void drawEdge(QImage& picture, const PanelShape& shape, double scale) {
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(Qt::NoPen);
    painter.setBrush(darkEdge());
    drawPanel(painter, shape, edgeWidth);
}

}  // namespace

QImage shadowGround(const PanelShape& shape, double scale) {
    QImage picture = emptyPicture(shape, scale);
    drawShadow(picture, shape, scale);
    drawEdge(picture, shape, scale);
    picture.setDevicePixelRatio(scale);
    return picture;
}

QImage innerEdge(const PanelShape& shape, double scale) {
    QImage picture = emptyPicture(shape, scale);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(QPen(darkEdge(), edgeWidth));
    drawPanel(painter, shape, -edgeWidth / 2);
    painter.end();
    picture.setDevicePixelRatio(scale);
    return picture;
}

QRegion coveredRegion(const PanelShape& shape) {
    QImage picture = emptyPicture(shape, 1);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    drawPanel(painter, shape, 0);
    painter.end();
    QRegion region;
    for (int row = 0; row < picture.height(); ++row) {
        const auto* const pixels = reinterpret_cast<const QRgb*>(picture.constScanLine(row));
        int first = 0;
        while (first < picture.width() && qAlpha(pixels[first]) == 0) ++first;
        // The panel has no hole, and its left side is as its right one.
        if (first < picture.width()) region += QRect(first, row, picture.width() - 2 * first, 1);
    }
    return region;
}

}  // namespace parlivo
