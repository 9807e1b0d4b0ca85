// SPDX-License-Identifier: MIT
#include "ui/views/RowLook.h"

#include "ui/views/Labels.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFontInfo>
#include <QPainter>

#include <algorithm>

namespace parlivo {

namespace {

constexpr float hoverOpacity = 0.06F;
constexpr double cornerRadius = 6;

}  // namespace

int RowLook::indicator() {
    constexpr int least = 16;
    constexpr double lettersShare = 0.6;  // of the half of it, so that it is even and its middle is sharp
    return std::max(least, 2 * qRound(QFontInfo(QApplication::font()).pixelSize() * lettersShare));
}

int RowLook::textLeft() {
    return margin + indicator() + gap;
}

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
