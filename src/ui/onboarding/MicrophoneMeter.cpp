// SPDX-License-Identifier: MIT
#include "ui/onboarding/MicrophoneMeter.h"

#include "platform/Platform.h"
#include "support/Clock.h"
#include "support/Error.h"
#include "ui/onboarding/InkColour.h"
#include "ui/onboarding/OnboardingWindow.h"
#include "ui/views/Form.h"
#include "ui/views/Progress.h"

#include <QProgressBar>
#include <QVBoxLayout>

#include <cmath>
#include <span>

namespace parlivo {

namespace {

using namespace std::chrono_literals;

constexpr auto redrawInterval = 50ms;
constexpr auto retryInterval = 3s;
constexpr int barWidth = 220;
/// Below it a room without a voice is silent; it is the bar's empty end, full scale its full one.
constexpr float floorDecibels = -60;

/// Root mean square of one block.
float loudness(std::span<const float> samples) {
    float sum = 0;
    for (const float sample : samples) sum += sample * sample;
    return samples.empty() ? 0 : std::sqrt(sum / static_cast<float>(samples.size()));
}

double shareOfBar(float level) {
    if (level <= 0) return 0;
    const float decibels = 20 * std::log10(level);
    return std::clamp(1 - decibels / floorDecibels, 0.0F, 1.0F);
}

}  // namespace

MicrophoneMeter::MicrophoneMeter(QWidget* parent)
    : QWidget(parent),
      bar_(makeProgressBar(this)),
      reason_(new Label({}, TextStyle::Body, inkColour, this)),
      settings_(makeButton(
          tr("Impostazioni audio"),
          [] { Platform::current().workspace().openPrivacyPane(PrivacyPane::Microphone); }, this)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    bar_->setAccessibleName(tr("Livello del microfono"));
    bar_->setFixedWidth(barWidth);
    reason_->setAlignment(Qt::AlignHCenter);
    column->addWidget(bar_, 0, Qt::AlignHCenter);
    column->addWidget(reason_);
    column->addWidget(settings_, 0, Qt::AlignHCenter);
    for (QWidget* part :
         {static_cast<QWidget*>(bar_), static_cast<QWidget*>(reason_), static_cast<QWidget*>(settings_)})
        part->hide();
    tick_.setInterval(redrawInterval);
    connect(&tick_, &QTimer::timeout, this, [this] { showLevel(); });
    retry_.setInterval(Clock::scaled(retryInterval));
    connect(&retry_, &QTimer::timeout, this, [this] { listen(); });
}

MicrophoneMeter::~MicrophoneMeter() {
    stop();
}

void MicrophoneMeter::setStatus(MicrophoneStatus status) {
    status_ = status;
    if (isVisible()) listen();
}

void MicrophoneMeter::listen() {
    stop();
    switch (status_) {
        case MicrophoneStatus::NotAsked:
            return explain({});
        case MicrophoneStatus::Denied:
            return explain(tr("Il microfono non è accessibile: il servizio audio non risponde o lo nega"));
        case MicrophoneStatus::Authorised:
            return tryCapture();
    }
}

void MicrophoneMeter::tryCapture() {
    try {
        capture_ = Platform::current().audioInput().open();
        if (!capture_) {
            retry_.start();
            return explain(
                tr("Nessun microfono trovato: collegane uno, o attivalo nelle impostazioni audio"));
        }
        interrupted_ = false;
        capture_->start([this](std::span<const float> samples, std::size_t) { level_ = loudness(samples); },
                        [this] { interrupted_ = true; });
    } catch (const Error& error) {
        capture_.reset();
        retry_.start();
        return explain(error.localizedDescription());
    }
    explain({});
    bar_->show();
    tick_.start();
}

void MicrophoneMeter::stop() {
    tick_.stop();
    retry_.stop();
    bar_->hide();
    if (capture_) capture_->stop(Clock::now());
    capture_.reset();
    level_ = 0;
}

void MicrophoneMeter::showLevel() {
    if (interrupted_) return listen();
    showFraction(*bar_, shareOfBar(level_));
}

void MicrophoneMeter::explain(const QString& reason) {
    reason_->setText(reason);
    reason_->setVisible(!reason.isEmpty());
    settings_->setVisible(!reason.isEmpty());
}

void MicrophoneMeter::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    listen();
}

void MicrophoneMeter::hideEvent(QHideEvent* event) {
    stop();
    QWidget::hideEvent(event);
}

}  // namespace parlivo
