#include "audio/overlay/WaveformView.h"

#include <QPainter>

namespace parlivo {

namespace {

constexpr qint64 framesPerSecond = 60;
constexpr qint64 nanosecondsPerSecond = 1'000'000'000;
constexpr qint64 nanosecondsPerMillisecond = 1'000'000;

}  // namespace

WaveformView::WaveformView(QWidget* parent) : QWidget(parent) {
    // Every pixel is painted each time, the transparent ones too.
    setAttribute(Qt::WA_OpaquePaintEvent);
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setSingleShot(true);
    timer_.callOnTimeout(this, [this] { showNextFrame(); });
    t0_.start();
}

void WaveformView::setSurroundings(WaveformPainter::Surroundings surroundings) {
    surroundings_ = surroundings;
    update();
}

void WaveformView::start() {
    t0_.start();
    framesShown_ = 0;
    lvl_ = 0;
    update();
    waitForNextFrame();
}

void WaveformView::stop() {
    timer_.stop();
}

void WaveformView::showNextFrame() {
    update();
    waitForNextFrame();
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

void WaveformView::paintEvent(QPaintEvent* /*event*/) {
    lvl_ = smoothed(lvl_, levelProvider_ ? levelProvider_() : 0);
    const double seconds = static_cast<double>(t0_.nsecsElapsed()) / nanosecondsPerSecond;
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPointF(), painter_.frame(size(), devicePixelRatioF(), surroundings_, seconds, lvl_));
}

}  // namespace parlivo
