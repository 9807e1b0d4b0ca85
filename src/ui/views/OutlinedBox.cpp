// SPDX-License-Identifier: MIT
#include "ui/views/OutlinedBox.h"

#include "ui/views/Contrast.h"
#include "ui/views/Labels.h"

#include <QPainter>
#include <QVBoxLayout>

namespace parlivo {

namespace {

constexpr double cornerRadius = 6;
constexpr float outlineOpacity = 0.3F;

}  // namespace

OutlinedBox::OutlinedBox(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
}

void OutlinedBox::fill(QWidget* content) {
    layout()->addWidget(content);
}

void OutlinedBox::paintEvent(QPaintEvent*) {
    QColor pale = secondaryColour(palette());
    pale.setAlphaF(pale.alphaF() * outlineOpacity);
    const QColor ground = palette().color(QPalette::Window);
    const QColor outline = legible(composited(pale, ground), ground, drawingContrast);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(outline, 1));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
}

}  // namespace parlivo
