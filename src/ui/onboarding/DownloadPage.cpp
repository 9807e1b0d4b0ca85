// SPDX-License-Identifier: MIT
#include "ui/onboarding/DownloadPage.h"

#include "ui/onboarding/CheckLine.h"
#include "ui/onboarding/InkColour.h"
#include "ui/views/Form.h"
#include "ui/views/Progress.h"

#include <QProgressBar>
#include <QVBoxLayout>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 mebibyte = 1 << 20;

qint64 wholeMebibytes(qint64 bytes) {
    return bytes / mebibyte;
}

QString figuresOf(const DownloadState& state) {
    return DownloadPage::tr("%1%  ·  %2 / %3 MB")
        .arg(QString::asprintf("%.0f", state.progress * 100))
        .arg(wholeMebibytes(state.received))
        .arg(wholeMebibytes(state.total));
}

}  // namespace

DownloadPage::DownloadPage(const std::function<void()>& retry, QWidget* parent) : CentredPage(parent) {
    title(tr("Scarico i motori scelti"));
    gap(8);
    addProgress();
    addFailure(retry);
    done_ = new CheckLine(tr("Tutto scaricato e verificato"), this);
    add(done_);
    show({});
}

void DownloadPage::addProgress() {
    running_ = new QWidget(this);
    label_ = new Label({}, TextStyle::Body, inkColour, running_);
    bar_ = makeProgressBar(running_);
    figures_ = new Label({}, TextStyle::Caption, inkColour, running_);
    auto* lines = new QVBoxLayout(running_);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(10);
    for (QWidget* line :
         {static_cast<QWidget*>(label_), static_cast<QWidget*>(bar_), static_cast<QWidget*>(figures_)})
        lines->addWidget(line);
    add(running_);
}

void DownloadPage::addFailure(const std::function<void()>& retry) {
    failed_ = new QWidget(this);
    auto* failure = new QVBoxLayout(failed_);
    failure->setSpacing(14);
    error_ = new Label({}, TextStyle::Body, inkColour, failed_);
    error_->setAlignment(Qt::AlignHCenter);
    failure->addWidget(error_);
    retry_ = makeButton(tr("Riprova"), retry, failed_);
    failure->addWidget(retry_, 0, Qt::AlignHCenter);
    add(failed_);
}

void DownloadPage::show(const DownloadState& state) {
    label_->setText(state.downloadLabel);
    showFraction(*bar_, state.progress);
    figures_->setText(figuresOf(state));
    running_->setVisible(state.downloading);
    error_->setText(state.downloadError.value_or(QString()));
    failed_->setVisible(state.downloadError.has_value());
    done_->setVisible(state.downloadsDone);
    if (state.downloadError) {
        retry_->setFocus();
    } else if (window()->focusWidget() == retry_) {
        // Qt leaves the focus on a hidden button if there is no other to give it to.
        setFocus();
    }
}

}  // namespace parlivo
