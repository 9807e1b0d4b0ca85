// SPDX-License-Identifier: MIT
#include "ui/views/ChoiceRow.h"

#include "ui/views/Controls.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QVBoxLayout>

#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr int circleSize = 16;
constexpr float hoverOpacity = 0.06F;
constexpr double cornerRadius = 6;

}  // namespace

ChoiceRow::ChoiceRow(const QString& label, const QString& detail, Colours colours, QWidget* parent)
    : QRadioButton(parent), circleColour_(std::move(colours.circle)), line_(new QHBoxLayout(this)) {
    setAccessibleName(label);
    setAccessibleDescription(detail);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

    auto* words = new QVBoxLayout;
    words->setSpacing(0);
    for (QLabel* part : {new Label(label, TextStyle::Body, primaryColour, this),
                         new Label(detail, TextStyle::Caption, std::move(colours.detail), this)}) {
        part->setAttribute(Qt::WA_TransparentForMouseEvents);
        words->addWidget(part);
    }
    circle_ = new SymbolView(u"circle"_s, circleSize, circleColour_, this);
    line_->setContentsMargins(6, 2, 6, 2);
    line_->setSpacing(10);
    line_->addWidget(circle_);
    line_->addLayout(words, 1);
    connect(this, &QAbstractButton::toggled, this, &ChoiceRow::toggledTo);
    connect(this, &QAbstractButton::clicked, this, &ChoiceRow::clickedOn);
}

/// A screen reader toggles without a click; a click on the chosen row toggles nothing.
void ChoiceRow::toggledTo(bool selected) {
    showSelection(selected);
    if (!selected || settingSelection_) return;
    choiceReported_ = true;
    if (onChosen) onChosen();
}

void ChoiceRow::clickedOn() {
    if (!std::exchange(choiceReported_, false) && onChosen) onChosen();
}

void ChoiceRow::setSelected(bool selected) {
    settingSelection_ = true;
    // A row of an exclusive group cannot be turned off by itself.
    setAutoExclusive(false);
    setChecked(selected);
    setAutoExclusive(true);
    settingSelection_ = false;
    if (const QWidget* group = parentWidget()) giveTabFocusToChecked(*group);
}

void ChoiceRow::showSelection(bool selected) {
    if (selected) {
        circle_->setSymbol(u"largecircle.fill.circle"_s, primaryColour);
    } else {
        circle_->setSymbol(u"circle"_s, circleColour_);
    }
}

void ChoiceRow::setTrailing(QWidget* trailing) {
    // Deleted later, because it may be the button whose click leads here.
    if (trailing_) {
        trailing_->hide();
        trailing_->deleteLater();
    }
    trailing_ = trailing;
    if (trailing_) {
        line_->addWidget(trailing_);
        trailing_->show();
    }
    updateGeometry();
}

QSize ChoiceRow::sizeHint() const {
    return layout()->totalSizeHint();
}

QSize ChoiceRow::minimumSizeHint() const {
    return layout()->totalMinimumSize();
}

bool ChoiceRow::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void ChoiceRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse() || isDown()) {
        QColor tint = primaryColour(palette());
        tint.setAlphaF(hoverOpacity);
        painter.setPen(Qt::NoPen);
        painter.setBrush(tint);
        painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
    }
    if (hasFocus()) {
        painter.setPen(QPen(secondaryColour(palette()), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    }
}

}  // namespace parlivo
