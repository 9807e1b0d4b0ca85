#include "ui/views/OutlinedBox.h"

#include "ui/views/Labels.h"

#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace parlivo {

namespace {

constexpr double cornerRadius = 6;
constexpr float outlineStrength = 0.3F;

}  // namespace

OutlinedBox::OutlinedBox(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
}

void OutlinedBox::fill(QWidget* content) {
    content_ = content;
    layout()->addWidget(content);
    content->installEventFilter(this);
}

/// The outline shows where the keyboard is.
bool OutlinedBox::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
    return QWidget::eventFilter(watched, event);
}

void OutlinedBox::paintEvent(QPaintEvent*) {
    QColor outline = primaryColour(palette());
    outline.setAlphaF(outlineStrength);
    if (content_ && content_->hasFocus()) outline = palette().color(QPalette::Highlight);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(outline, 1));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
}

}  // namespace parlivo
