#include "ui/SymbolIcon.h"

#include "platform/Platform.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <array>

namespace parlivo::SymbolIcon {

namespace {

constexpr std::array iconSizes{16, 20, 22, 24, 32, 44, 48, 64};

std::optional<QString> path(const QString& name) {
    return Platform::current().bundle().resource(QStringLiteral("symbols/") + name + QStringLiteral(".svg"));
}

QImage draw(QSvgRenderer& symbol, const QColor& colour, int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    symbol.render(&painter, QRectF(image.rect()));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), colour);
    return image;
}

}  // namespace

QImage image(const QString& name, const QColor& colour, int size) {
    const auto file = path(name);
    if (!file) return {};
    QSvgRenderer symbol(*file);
    return symbol.isValid() ? draw(symbol, colour, size) : QImage();
}

QIcon icon(const QString& name, const QColor& colour) {
    const auto file = path(name);
    if (!file) return {};
    QSvgRenderer symbol(*file);
    QIcon icon;
    if (!symbol.isValid()) return icon;
    for (const int size : iconSizes) icon.addPixmap(QPixmap::fromImage(draw(symbol, colour, size)));
    return icon;
}

}  // namespace parlivo::SymbolIcon
