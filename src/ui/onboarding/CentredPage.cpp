// SPDX-License-Identifier: MIT
#include "ui/onboarding/CentredPage.h"

#include "ui/onboarding/InkColour.h"
#include "ui/views/SymbolView.h"

#include <QVBoxLayout>

namespace parlivo {

namespace {
constexpr int symbolSize = 52;
}  // namespace

CentredPage::CentredPage(QWidget* parent) : QWidget(parent), column_(new QVBoxLayout) {
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addStretch(1);
    whole->addLayout(column_);
    whole->addStretch(1);
    column_->setSpacing(14);
}

void CentredPage::symbol(const QString& name) {
    column_->addWidget(new SymbolView(name, symbolSize, inkColour, this), 0, Qt::AlignHCenter);
}

void CentredPage::title(const QString& text) {
    auto* label = new Label(text, TextStyle::Title, inkColour, this);
    label->setAlignment(Qt::AlignHCenter);
    column_->addWidget(label);
}

Label& CentredPage::text(const QString& text) {
    auto* label = new Label(text, TextStyle::Lead, inkColour, this);
    label->setAlignment(Qt::AlignHCenter);
    column_->addWidget(label);
    return *label;
}

void CentredPage::add(QWidget* widget, Qt::Alignment alignment) {
    column_->addWidget(widget, 0, alignment);
}

void CentredPage::gap(int points) {
    column_->addSpacing(points);
}

}  // namespace parlivo
