// SPDX-License-Identifier: MIT
#include "audio/overlay/WaveformView.h"

#include <algorithm>
#include <utility>

namespace parlivo {

namespace {

constexpr qint64 framesPerSecond = 60;
constexpr qint64 nanosecondsPerSecond = 1'000'000'000;
constexpr qint64 nanosecondsPerMillisecond = 1'000'000;

}  // namespace

WaveformView::WaveformView(FloatingPanel& panel, QSize size) : panel_(panel), size_(size) {
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setSingleShot(true);
    timer_.callOnTimeout(&timer_, [this] { showNextFrame(); });
}

void WaveformView::start() {
    t0_.start();
    framesShown_ = 0;
    lvl_ = 0;
    restingSince_.reset();
    draw();
    waitForNextFrame();
}

void WaveformView::rest() {
    if (!restingSince_) restingSince_ = seconds();
}

double WaveformView::seconds() const {
    return static_cast<double>(t0_.nsecsElapsed()) / nanosecondsPerSecond;
}

double WaveformView::restShare() const {
    constexpr double duration = 0.35;  // seconds
    if (!restingSince_) return 0;
    const double share = std::clamp((seconds() - *restingSince_) / duration, 0.0, 1.0);
    return share * share * (3 - 2 * share);
}

void WaveformView::stop() {
    timer_.stop();
}

void WaveformView::showNextFrame() {
    lvl_ = smoothed(lvl_, levelProvider_ ? levelProvider_() : 0);
    draw();
    waitForNextFrame();
}

void WaveformView::draw() {
    const auto [scale, corners] = panel_.canvas();
    panel_.present(painter_.frame(size_, scale, corners, seconds(), lvl_, restShare()));
}

/// Timers count whole milliseconds, frames last 16⅔: each is due at its own moment since the start, so that
/// sixty come in a second. Frames whose moment has passed are left out.
void WaveformView::waitForNextFrame() {
    const qint64 now = t0_.nsecsElapsed();
    framesShown_ = std::max(framesShown_ + 1, now * framesPerSecond / nanosecondsPerSecond);
    const qint64 due = framesShown_ * nanosecondsPerSecond / framesPerSecond;
    const qint64 wait = (due - now + nanosecondsPerMillisecond / 2) / nanosecondsPerMillisecond;
    timer_.start(static_cast<int>(std::max<qint64>(wait, 0)));
}

double WaveformView::smoothed(double level, double input) {
    return level < input ? 0.5 * input + 0.5 * level : 0.1 * input + 0.9 * level;
}

}  // namespace parlivo
