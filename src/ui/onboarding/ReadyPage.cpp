// SPDX-License-Identifier: MIT
#include "ui/onboarding/ReadyPage.h"

#include "input/HotKeyStatus.h"
#include "ui/SessionHints.h"
#include "ui/onboarding/InkColour.h"
#include "ui/onboarding/TextPages.h"
#include "ui/views/Form.h"

namespace parlivo {

ReadyPage::ReadyPage(const std::function<void()>& chooseHotKey, QWidget* parent) : CentredPage(parent) {
    fillReadyPage(*this);
    field_ = new TextField(tr("Prova qui"), tr("Prova qui"), this);
    warning_ = new Label({}, TextStyle::Body, inkColour, this);
    choose_ = makeButton(tr("Scegli la scorciatoia…"), chooseHotKey, this);
    add(field_);
    add(new SessionHints(SessionHint::Topic::HotKey, {TextStyle::Body, inkColour, Qt::AlignHCenter, {}},
                         *this));
    warning_->setAlignment(Qt::AlignHCenter);
    add(warning_);
    add(choose_, Qt::AlignHCenter);
    connect(&HotKeyStatus::shared(), &HotKeyStatus::changed, this, [this] { showWarning(); });
    showWarning();
}

QWidget* ReadyPage::field() const {
    return field_;
}

void ReadyPage::showWarning() {
    const auto warning = HotKeyStatus::shared().warning();
    warning_->setText(warning.value_or(QString()));
    warning_->setVisible(warning.has_value());
    choose_->setVisible(warning.has_value());
}

}  // namespace parlivo
