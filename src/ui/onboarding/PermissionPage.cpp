// SPDX-License-Identifier: MIT
#include "ui/onboarding/PermissionPage.h"

#include "ui/onboarding/CheckLine.h"
#include "ui/views/Form.h"

#include <QHBoxLayout>

namespace parlivo {

using namespace Qt::StringLiterals;

PermissionPage::PermissionPage(const Texts& texts, const std::function<void()>& ask, QWidget* parent)
    : CentredPage(parent) {
    symbol(texts.symbol);
    title(texts.title);
    text(texts.text);
    gap(6);
    auto* line = new QWidget(this);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(0, 0, 0, 0);
    button_ = makeButton(texts.button, ask, line);
    granted_ = new CheckLine(tr("Permesso concesso"), line);
    row->addStretch(1);
    row->addWidget(button_);
    row->addWidget(granted_);
    row->addStretch(1);
    line->setMinimumHeight(button_->sizeHint().height());
    add(line);
}

void PermissionPage::setGranted(bool granted) {
    button_->setVisible(!granted);
    granted_->setVisible(granted);
}

}  // namespace parlivo
