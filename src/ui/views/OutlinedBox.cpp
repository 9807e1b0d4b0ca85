// SPDX-License-Identifier: MIT
#include "ui/views/OutlinedBox.h"

#include "ui/views/Labels.h"
#include "ui/views/ScrollBars.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace parlivo {

namespace {

constexpr double cornerRadius = 6;
constexpr qreal focusWidth = 1.6;

}  // namespace

void drawField(QWidget& canvas, const QPalette& surroundings, FieldFocus focus) {
    const QColor outline =
        focus == FieldFocus::Here ? accentColour(surroundings) : outlineColour(surroundings);
    const qreal width = focus == FieldFocus::None ? 1 : focusWidth;
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(outline, width));
    painter.setBrush(surroundings.color(QPalette::Base));
    const qreal inside = width / 2;
    painter.drawRoundedRect(QRectF(canvas.rect()).adjusted(inside, inside, -inside, -inside), cornerRadius,
                            cornerRadius);
}

OutlinedBox::OutlinedBox(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
}

void OutlinedBox::fill(QWidget* content) {
    layout()->addWidget(content);
    content->installEventFilter(this);
    if (auto* area = qobject_cast<QAbstractScrollArea*>(content)) useSlimScrollBar(*area);
}

bool OutlinedBox::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
    return QWidget::eventFilter(watched, event);
}

void OutlinedBox::paintEvent(QPaintEvent*) {
    const QWidget* const content = layout()->count() > 0 ? layout()->itemAt(0)->widget() : nullptr;
    drawField(*this, palette(), content && content->hasFocus() ? FieldFocus::Here : FieldFocus::None);
}

}  // namespace parlivo
