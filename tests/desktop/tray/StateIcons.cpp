// SPDX-License-Identifier: MIT
#include "desktop/tray/StateIcons.h"

#include "support/Error.h"

#include <QPainter>

#include <cstdlib>

namespace parlivo::desktop {

QString StateIcon::words() const {
    return QStringLiteral("%1 %2").arg(QLatin1String(symbol), QLatin1String(tint));
}

QImage StateIcon::picture(Panel panel) const {
    const QString name = QStringLiteral("%1-%2.png")
                             .arg(QLatin1String(symbol),
                                  panel == Panel::Dark ? QStringLiteral("dark") : QStringLiteral("light"));
    QImage picture(QStringLiteral(PARLIVO_STATE_ICONS "/") + name);
    if (picture.isNull()) throw Error(QStringLiteral("Test"), 1, QStringLiteral("no picture ") + name);
    return picture;
}

QImage StateIcon::picture(Panel panel, const QColor& ground) const {
    const QImage icon = picture(panel);
    QImage result(icon.size(), QImage::Format_RGB32);
    result.fill(ground);
    QPainter(&result).drawImage(0, 0, icon);
    return result;
}

bool looksLike(const QImage& actual, const QImage& expected) {
    constexpr int rounding = 2;
    if (actual.size() != expected.size()) return false;
    const QImage one = actual.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage other = expected.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < one.height(); ++y) {
        const uchar* a = one.constScanLine(y);
        const uchar* b = other.constScanLine(y);
        for (int channel = 0; channel < 4 * one.width(); ++channel)
            if (std::abs(a[channel] - b[channel]) > rounding) return false;
    }
    return true;
}

}  // namespace parlivo::desktop
