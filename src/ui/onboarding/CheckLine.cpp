// SPDX-License-Identifier: MIT
#include "ui/onboarding/CheckLine.h"

#include "ui/onboarding/InkColour.h"
#include "ui/views/Labels.h"
#include "ui/views/SymbolView.h"

#include <QHBoxLayout>

namespace parlivo {

using namespace Qt::StringLiterals;

CheckLine::CheckLine(const QString& text, QWidget* parent) : QWidget(parent) {
    constexpr int checkSize = 20;
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addStretch(1);
    row->addWidget(new SymbolView(u"checkmark.circle.fill"_s, checkSize, inkColour, this));
    auto* words = new Label(text, TextStyle::Headline, inkColour, this);
    words->setWordWrap(false);
    row->addWidget(words);
    row->addStretch(1);
}

}  // namespace parlivo
