// SPDX-License-Identifier: MIT
#pragma once

#include "audio/overlay/WaveformPainter.h"
#include "platform/FloatingPanel.h"

#include <QElapsedTimer>
#include <QSize>
#include <QTimer>

#include <functional>
#include <optional>

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

    /// How far the ribbon has come to rest, 0 to 1.
    double restShare() const;

    /// Begins the animation anew, from level 0.
    void start();
    /// The ribbon comes to rest: nobody is listening any more, and the program is at work on what it heard.
    void rest();
    void stop();
    bool isRunning() const { return timer_.isActive(); }

    /// The level as the ribbon shows it: it follows the input fast upwards and gently downwards.
    double level() const { return lvl_; }
    static double smoothed(double level, double input);

  private:
    void showNextFrame();
    void draw();
    void waitForNextFrame();
    double seconds() const;

    FloatingPanel& panel_;
    const QSize size_;
    LevelProvider levelProvider_;
    QTimer timer_;
    QElapsedTimer t0_;
    qint64 framesShown_ = 0;  // since t0_, those that were left out included
    double lvl_ = 0;
    std::optional<double> restingSince_;  // seconds after t0_
    WaveformPainter painter_;
};

}  // namespace parlivo
