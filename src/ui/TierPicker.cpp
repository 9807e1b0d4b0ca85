// SPDX-License-Identifier: MIT
#include "ui/TierPicker.h"

#include "ui/views/ChoiceRow.h"
#include "ui/views/Form.h"
#include "ui/views/Labels.h"
#include "ui/views/Progress.h"
#include "ui/views/RowLook.h"

#include <QProgressBar>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr int barWidth = 90;
constexpr int checkSize = 16;
constexpr int smallButtonPadding = 28;

}  // namespace

TierPicker::TierPicker(const QString& title, std::vector<ModelCatalog::Entry> tiers,
                       Binding<QString> selection, std::function<void()> onChanged, ModelFetch fetch,
                       QWidget* parent)
    : QWidget(parent),
      tiers_(std::move(tiers)),
      selection_(std::move(selection)),
      onChanged_(std::move(onChanged)),
      fetch_(std::move(fetch)) {
    setAccessibleName(title);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto* heading = new Label(title, TextStyle::Headline, primaryColour, this);
    heading->setContentsMargins(Form::headingMargins());
    column->addWidget(heading);
    for (const ModelCatalog::Entry& entry : tiers_) {
        auto* row = new ChoiceRow(entry.label, entry.detail, {}, this);
        row->onChosen = [this, entry] { choose(entry); };
        column->addWidget(row);
        rows_.push_back(row);
    }
    standInLine_ = new Label({}, TextStyle::Caption, secondaryColour, this);
    standInLine_->setContentsMargins(RowLook::textLeft(), 0, RowLook::margin, RowLook::padding);
    column->addWidget(standInLine_);
    errorLine_ = new Label({}, TextStyle::Caption, errorColour, this);
    errorLine_->setContentsMargins(RowLook::textLeft(), 0, RowLook::margin, RowLook::padding);
    column->addWidget(errorLine_);
    refresh();
}

void TierPicker::choose(const ModelCatalog::Entry& entry) {
    selection_.set(entry.id);
    refresh();
    if (onChanged_) onChanged_();
}

void TierPicker::download(const ModelCatalog::Entry& entry) {
    error_.reset();
    downloading_ = entry.id;
    progress_ = 0;
    refresh();
    // An earlier download of the same file is called off by this one's taking its place.
    downloaders_[entry.id] = fetch_(
        entry,
        {.onProgress = [this, id = entry.id](double fraction, qint64, qint64) { showProgress(id, fraction); },
         .onCompletion = [this, id = entry.id](const auto& error) { finish(id, error); }});
}

void TierPicker::showProgress(const QString& id, double fraction) {
    if (downloading_ != id) return;
    progress_ = fraction;
    if (bar_) showFraction(*bar_, fraction);
}

void TierPicker::finish(const QString& id, const std::optional<Error>& error) {
    downloaders_.erase(id);
    if (downloading_ == id) downloading_.reset();
    if (error) error_ = error->localizedDescription();
    refresh();
    if (onChanged_) onChanged_();
}

void TierPicker::refresh() {
    const QString selected = selection_.get();
    bar_ = nullptr;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        rows_[i]->setSelected(tiers_[i].id == selected);
        rows_[i]->setTrailing(trailingOf(tiers_[i], tiers_[i].id == selected));
    }
    showStandIn(selected);
    errorLine_->setText(error_.value_or(QString()));
    errorLine_->setVisible(error_.has_value());
}

/// Until its file is there, the chosen tier is not the one that is used.
void TierPicker::showStandIn(const QString& selected) {
    const auto chosen = std::ranges::find(tiers_, selected, &ModelCatalog::Entry::id);
    const auto* const standIn = chosen == tiers_.end() ? nullptr : ModelCatalog::standInFor(*chosen, tiers_);
    standInLine_->setText(
        standIn ? tr("Finché «%1» non è scaricata resta in uso «%2»").arg(chosen->label, standIn->label)
                : QString());
    standInLine_->setVisible(standIn != nullptr);
}

QWidget* TierPicker::trailingOf(const ModelCatalog::Entry& entry, bool selected) {
    if (ModelCatalog::isDownloaded(entry)) {
        auto* tick = new SymbolView(u"checkmark.circle.fill"_s, checkSize, successColour, this);
        tick->setAccessibleName(tr("Scaricato"));
        return tick;
    }
    if (!selected) return nullptr;
    if (downloading_ == entry.id) return makeBar();
    QPushButton* button = makeButton(
        tr("Scarica"), [this, entry] { download(entry); }, this);
    button->setFont(textFont(TextStyle::Caption));
    button->setFixedWidth(button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width() +
                          smallButtonPadding);
    return button;
}

QWidget* TierPicker::makeBar() {
    bar_ = makeProgressBar(this);
    bar_->setFixedWidth(barWidth);
    showFraction(*bar_, progress_);
    return bar_;
}

void TierPicker::showEvent(QShowEvent* event) {
    refresh();
    QWidget::showEvent(event);
}

}  // namespace parlivo
