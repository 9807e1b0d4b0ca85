// SPDX-License-Identifier: MIT
#include "ui/onboarding/DownloadPage.h"

#include "ui/onboarding/CheckLine.h"
#include "ui/onboarding/InkColour.h"
#include "ui/views/Form.h"
#include "ui/views/Progress.h"

#include <QHBoxLayout>
#include <QLocale>
#include <QProgressBar>
#include <QVBoxLayout>

#include <cmath>

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

QString timeLeft(const DownloadState& state) {
    const double seconds = static_cast<double>(state.allTotal - state.allReceived) / *state.bytesPerSecond;
    if (seconds < 60) return DownloadPage::tr("meno di un minuto");
    if (seconds < 5400) return DownloadPage::tr("circa %1 min").arg(std::lround(seconds / 60));
    return DownloadPage::tr("circa %1 ore").arg(std::lround(seconds / 3600));
}

/// What is to be expected of all files together; empty as long as nothing can be told.
QString forecastOf(const DownloadState& state) {
    if (state.stalled)
        return DownloadPage::tr("La connessione è ferma: non arriva nulla da più di 10 secondi");
    if (!state.bytesPerSecond || *state.bytesPerSecond <= 0 || state.allTotal < 1) return {};
    const QString speed = QLocale().toString(*state.bytesPerSecond / static_cast<double>(mebibyte), 'f', 1);
    return DownloadPage::tr("In tutto %1 di %2 MB  ·  %3 MB/s  ·  %4")
        .arg(QString::number(wholeMebibytes(state.allReceived)),
             QString::number(wholeMebibytes(state.allTotal)), speed, timeLeft(state));
}

}  // namespace

DownloadPage::DownloadPage(const Actions& actions, QWidget* parent) : CentredPage(parent) {
    title(tr("Scarico i motori scelti"));
    gap(8);
    addProgress();
    addFailure(actions);
    done_ = new CheckLine(tr("Tutto scaricato e verificato"), this);
    add(done_);
    show({});
}

void DownloadPage::addProgress() {
    running_ = new QWidget(this);
    label_ = new Label({}, TextStyle::Body, inkColour, running_);
    bar_ = makeProgressBar(running_);
    figures_ = new Label({}, TextStyle::Caption, inkColour, running_);
    forecast_ = new Label({}, TextStyle::Caption, inkColour, running_);
    // What is above it stays where it is when there is something to tell.
    auto policy = forecast_->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    forecast_->setSizePolicy(policy);
    auto* lines = new QVBoxLayout(running_);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(10);
    for (QWidget* line : {static_cast<QWidget*>(label_), static_cast<QWidget*>(bar_),
                          static_cast<QWidget*>(figures_), static_cast<QWidget*>(forecast_)})
        lines->addWidget(line);
    add(running_);
}

void DownloadPage::addFailure(const Actions& actions) {
    failed_ = new QWidget(this);
    auto* failure = new QVBoxLayout(failed_);
    failure->setSpacing(14);
    error_ = new Label({}, TextStyle::Body, inkColour, failed_);
    error_->setAlignment(Qt::AlignHCenter);
    failure->addWidget(error_);
    auto* buttons = new QHBoxLayout;
    retry_ = makeButton(tr("Riprova"), actions.retry, failed_);
    buttons->addStretch(1);
    buttons->addWidget(retry_);
    buttons->addWidget(makeButton(tr("Più tardi"), actions.later, failed_));
    buttons->addStretch(1);
    failure->addLayout(buttons);
    add(failed_);
}

void DownloadPage::show(const DownloadState& state) {
    label_->setText(state.downloadLabel);
    showFraction(*bar_, state.progress);
    figures_->setText(figuresOf(state));
    forecast_->setText(forecastOf(state));
    forecast_->setVisible(!forecast_->text().isEmpty());
    running_->setVisible(state.downloading);
    error_->setText(state.downloadError.value_or(QString()));
    failed_->setVisible(state.downloadError.has_value());
    done_->setVisible(state.downloadsDone);
    if (state.downloadError) {
        retry_->setFocus();
    } else if (failed_->isAncestorOf(window()->focusWidget())) {
        // Qt leaves the focus on a hidden button if there is no other to give it to.
        setFocus();
    }
}

}  // namespace parlivo
