// SPDX-License-Identifier: MIT
#include "ui/views/SymbolIcon.h"

#include "platform/Platform.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <optional>
#include <utility>
#include <vector>

namespace parlivo::SymbolIcon {

namespace {

constexpr std::array iconSizes{16, 20, 22, 24, 32, 44, 48, 64};

/// A symbol is drawn on several grids, each for the pictures that it fits into pixel by pixel.
struct Drawing {
    int grid = 0;
    std::unique_ptr<QSvgRenderer> renderer;
};

std::unique_ptr<QSvgRenderer> load(const QString& file) {
    const auto path = Platform::current().bundle().resource(QStringLiteral("symbols/") + file);
    if (!path) return {};
    auto renderer = std::make_unique<QSvgRenderer>(*path);
    return renderer->isValid() ? std::move(renderer) : nullptr;
}

/// The one that is best for any size comes last.
std::vector<Drawing> drawings(const QString& name) {
    std::vector<Drawing> found;
    for (const auto& [grid, folder] : {std::pair(16, ""), std::pair(22, "22/")}) {
        auto renderer = load(QString::fromLatin1(folder) + name + QStringLiteral(".svg"));
        if (renderer) found.push_back({grid, std::move(renderer)});
    }
    return found;
}

/// Where a drawing goes in a picture of `size` pixels: over a whole multiple of its grid, if that leaves no
/// more than a pixel on each side.
std::optional<QRect> crispPlace(int grid, int size) {
    constexpr int mostLeft = 2;
    const int left = size % grid;
    if (size < grid || left > mostLeft) return {};
    return QRect(left / 2, left / 2, size - left, size - left);
}

QImage draw(const std::vector<Drawing>& drawings, const QColor& colour, int size) {
    const Drawing* drawing = &drawings.back();
    QRect place(0, 0, size, size);
    for (const Drawing& candidate : drawings) {
        if (const auto crisp = crispPlace(candidate.grid, size)) {
            drawing = &candidate;
            place = *crisp;
        }
    }
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawing->renderer->render(&painter, QRectF(place));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), colour);
    return image;
}

/// A symbol on the same one in another colour, which is drawn in a circle around it.
QImage outlined(const QImage& symbol, const QImage& around) {
    constexpr int directions = 16;
    constexpr double widthOfSize = 1.0 / 14;
    const double width = std::max(1.0, symbol.width() * widthOfSize);
    QImage result(symbol.size(), QImage::Format_ARGB32_Premultiplied);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (int i = 0; i < directions; ++i) {
        const double angle = 2 * std::numbers::pi * i / directions;
        painter.drawImage(QPointF(width * std::cos(angle), width * std::sin(angle)), around);
    }
    painter.drawImage(0, 0, symbol);
    return result;
}

}  // namespace

QImage image(const QString& name, const QColor& colour, int size) {
    const auto symbol = drawings(name);
    return symbol.empty() ? QImage() : draw(symbol, colour, size);
}

QIcon icon(const QString& name, const QColor& colour, const QColor& outline) {
    const auto symbol = drawings(name);
    QIcon icon;
    if (symbol.empty()) return icon;
    for (const int size : iconSizes) {
        const QImage plain = draw(symbol, colour, size);
        icon.addPixmap(
            QPixmap::fromImage(outline.isValid() ? outlined(plain, draw(symbol, outline, size)) : plain));
    }
    return icon;
}

}  // namespace parlivo::SymbolIcon
