// SPDX-License-Identifier: MIT
#include "ui/views/AppIcon.h"

#include "platform/Platform.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <array>

namespace parlivo {

namespace {

constexpr std::array iconSizes{16, 24, 32, 48, 64, 96, 128, 192, 256};

QPixmap draw(QSvgRenderer& drawing, int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    drawing.render(&painter, QRectF(pixmap.rect()));
    return pixmap;
}

}  // namespace

QIcon appIcon() {
    QIcon icon;
    const auto file = Platform::current().bundle().resource(QStringLiteral("icons/it.parlivo.Parlivo.svg"));
    if (!file) return icon;
    QSvgRenderer drawing(*file);
    if (!drawing.isValid()) return icon;
    for (const int size : iconSizes) icon.addPixmap(draw(drawing, size));
    return icon;
}

}  // namespace parlivo
