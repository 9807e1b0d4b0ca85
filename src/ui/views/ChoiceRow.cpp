// SPDX-License-Identifier: MIT
#include "ui/views/ChoiceRow.h"

#include "ui/views/RowLook.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

void giveTabFocusToChecked(const QWidget& group) {
    const auto buttons = group.findChildren<QRadioButton*>(Qt::FindDirectChildrenOnly);
    const bool chosen = std::ranges::any_of(buttons, &QRadioButton::isChecked);
    for (QRadioButton* button : buttons) {
        button->setFocusPolicy(!chosen || button->isChecked() ? Qt::StrongFocus : Qt::ClickFocus);
    }
}

ChoiceRow::ChoiceRow(const QString& label, const QString& detail, Colours colours, QWidget* parent)
    : QRadioButton(parent),
      circleColour_(std::move(colours.circle)),
      edgeColour_(std::move(colours.edge)),
      line_(new QHBoxLayout(this)) {
    setAccessibleName(label);
    setAccessibleDescription(detail);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

    auto* words = new QVBoxLayout;
    words->setSpacing(0);
    words->addWidget(new Label(label, TextStyle::Body, primaryColour, this));
    if (!detail.isEmpty())
        words->addWidget(new Label(detail, TextStyle::Caption, std::move(colours.detail), this));
    for (QWidget* part : findChildren<QLabel*>()) part->setAttribute(Qt::WA_TransparentForMouseEvents);
    circle_ = new SymbolView(u"circle"_s, RowLook::indicator(), circleColour_, this);
    line_->setContentsMargins(RowLook::margin, RowLook::padding, RowLook::margin, RowLook::padding);
    line_->setSpacing(RowLook::gap);
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
        circle_->setSymbol(u"largecircle.fill.circle"_s, accentColour);
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
    RowLook::drawBackground(painter, *this);
    if (edgeColour_ && !isChecked()) drawEdge(painter);
}

void ChoiceRow::drawEdge(QPainter& painter) const {
    painter.setPen(QPen(edgeColour_(palette()), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(circle_->geometry()).adjusted(1, 1, -1, -1));
}

}  // namespace parlivo
