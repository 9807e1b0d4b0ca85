// SPDX-License-Identifier: MIT
#include "ui/settings/OwnHotKey.h"

#include "input/HotKeyChoice.h"
#include "input/HotKeyStatus.h"
#include "ui/settings/KeyCaptureButton.h"
#include "ui/views/Labels.h"
#include "ui/views/RowLook.h"

#include <QVBoxLayout>

#include <utility>

namespace parlivo {

OwnHotKey::OwnHotKey(std::function<void()> adopted, QWidget* parent)
    : QWidget(parent),
      adopted_(std::move(adopted)),
      button_(new KeyCaptureButton([this](const KeyCapture& capture) { take(capture); }, this)),
      verdict_(new Label({}, TextStyle::Caption, secondaryColour, this)),
      warning_(new Label({}, TextStyle::Caption, errorColour, this)) {
    auto* column = new QVBoxLayout(this);
    constexpr int spacing = 4;
    column->setContentsMargins(RowLook::margin, 0, RowLook::margin, spacing);
    column->setSpacing(spacing);
    column->addWidget(button_, 0, Qt::AlignRight);
    column->addWidget(verdict_);
    column->addWidget(warning_);
    verdict_->setAlignment(Qt::AlignRight);
    warning_->setAlignment(Qt::AlignRight);
    // The verdict on a former try says nothing of the next.
    connect(button_, &QPushButton::clicked, this, [this] { sayInForce(); });
    connect(&HotKeyStatus::shared(), &HotKeyStatus::changed, this, [this] { refresh(); });
    refresh();
}

void OwnHotKey::offer() {
    button_->show();
}

void OwnHotKey::refresh() {
    button_->setVisible(HotKeyChoice::current().id == HotKeyChoice::ownId());
    sayInForce();
    const auto warning = HotKeyStatus::shared().warning();
    warning_->setText(warning.value_or(QString()));
    warning_->setVisible(warning.has_value());
}

void OwnHotKey::take(const KeyCapture& capture) {
    using Outcome = KeyCapture::Outcome;
    if (capture.outcome == Outcome::Modifiers)
        return say(tr(
            "Manca un tasto oltre a Ctrl, Alt, Super o Maiusc, oppure il sistema tiene per sé la combinazione"));
    if (!capture.key) return say(tr("Questo tasto non si può usare come scorciatoia"));
    if (capture.outcome == Outcome::Withheld)
        return say(tr("%1 non si può usare: il sistema la tiene per sé")
                       .arg(HotKeyChoice::titleOf(*capture.key, capture.modifiers)));
    judge(*capture.key, capture.modifiers);
}

void OwnHotKey::judge(KeyCode key, HotKeyModifiers modifiers) {
    using Verdict = HotKeyStatus::Verdict;
    const QString title = HotKeyChoice::titleOf(key, modifiers);
    switch (HotKeyStatus::shared().verdictOn(key, modifiers)) {
        case Verdict::Free:
            HotKeyChoice::store(key, modifiers);
            adopted_();
            refresh();
            return say(tr("%1 è libera: ora è la tua scorciatoia").arg(title));
        case Verdict::Taken:
            return say(tr("%1 è già usata da un altro programma").arg(title));
        case Verdict::Unusable:
            return say(
                tr("%1 non si può usare: serve Ctrl, Alt o Super, oppure un tasto funzione").arg(title));
    }
}

void OwnHotKey::sayInForce() {
    const Preset inForce = HotKeyChoice::current();
    const bool isOwn = inForce.id == HotKeyChoice::ownId();
    say(isOwn ? tr("La tua scorciatoia è %1").arg(inForce.label) : QString());
}

void OwnHotKey::say(const QString& verdict) {
    verdict_->setText(verdict);
    verdict_->setVisible(!verdict.isEmpty());
}

void OwnHotKey::showEvent(QShowEvent* event) {
    HotKeyStatus::shared().look();
    refresh();
    QWidget::showEvent(event);
}

}  // namespace parlivo
