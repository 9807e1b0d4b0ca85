// SPDX-License-Identifier: MIT
#pragma once

#include "audio/overlay/WaveformPainter.h"
#include "platform/FloatingPanel.h"

#include <QElapsedTimer>
#include <QSize>
#include <QTimer>

#include <functional>

namespace parlivo {

/// A source of the input level, 0 to 1.
using LevelProvider = std::function<float()>;

/// The card with the ribbon that swells with the voice. Between start and stop it draws sixty frames a
/// second onto its panel. Main thread.
class WaveformView {
  public:
    /// `size` in device-independent pixels. The panel must outlive the view.
    WaveformView(FloatingPanel& panel, QSize size);

    /// Asked once a frame; without one the level is 0.
    void setLevelProvider(LevelProvider provider) { levelProvider_ = std::move(provider); }

    /// Begins the animation anew, from level 0.
    void start();
    void stop();
    bool isRunning() const { return timer_.isActive(); }

    /// The level as the ribbon shows it: it follows the input fast upwards and gently downwards.
    double level() const { return lvl_; }
    static double smoothed(double level, double input);

  private:
    void showNextFrame();
    void draw();
    void waitForNextFrame();

    FloatingPanel& panel_;
    const QSize size_;
    LevelProvider levelProvider_;
    QTimer timer_;
    QElapsedTimer t0_;
    qint64 framesShown_ = 0;  // since t0_, those that were left out included
    double lvl_ = 0;
    WaveformPainter painter_;
};

}  // namespace parlivo
