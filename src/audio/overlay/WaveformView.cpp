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
    draw();
    waitForNextFrame();
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
    const double seconds = static_cast<double>(t0_.nsecsElapsed()) / nanosecondsPerSecond;
    panel_.present(painter_.frame(size_, scale, corners, seconds, lvl_));
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
