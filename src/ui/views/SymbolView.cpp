// SPDX-License-Identifier: MIT
#include "ui/views/SymbolView.h"

#include "ui/views/SymbolIcon.h"

#include <QPainter>

#include <utility>

namespace parlivo {

SymbolView::SymbolView(const QString& name, int size, PaletteColour colour, QWidget* parent)
    : QWidget(parent), name_(name), colour_(std::move(colour)) {
    setFixedSize(size, size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SymbolView::setSymbol(const QString& name, PaletteColour colour) {
    name_ = name;
    colour_ = std::move(colour);
    update();
}

void SymbolView::paintEvent(QPaintEvent*) {
    const QColor wanted = colour_(palette());
    QColor opaque = wanted;
    opaque.setAlpha(255);
    QPainter painter(this);
    painter.setOpacity(wanted.alphaF());
    painter.drawImage(rect(), SymbolIcon::image(name_, opaque, qRound(width() * devicePixelRatioF())));
}

}  // namespace parlivo
