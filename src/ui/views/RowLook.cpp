// SPDX-License-Identifier: MIT
#include "ui/views/RowLook.h"

#include "ui/views/Labels.h"

#include <QAbstractButton>
#include <QPainter>

namespace parlivo {

namespace {

constexpr float hoverOpacity = 0.06F;
constexpr double cornerRadius = 6;

}  // namespace

void RowLook::drawBackground(QPainter& painter, const QAbstractButton& row) {
    if (row.underMouse() || row.isDown()) {
        QColor tint = primaryColour(row.palette());
        tint.setAlphaF(hoverOpacity);
        painter.setPen(Qt::NoPen);
        painter.setBrush(tint);
        painter.drawRoundedRect(row.rect(), cornerRadius, cornerRadius);
    }
    if (row.hasFocus()) {
        painter.setPen(QPen(accentColour(row.palette()), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(row.rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius,
                                cornerRadius);
    }
}

}  // namespace parlivo
