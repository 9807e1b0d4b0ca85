#pragma once

#include "audio/overlay/WaveformPainter.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace parlivo {

/// A source of the input level, 0 to 1.
using LevelProvider = std::function<float()>;

/// The card with the ribbon that swells with the voice. It moves between start and stop, sixty times a
/// second while it is visible. Main thread.
class WaveformView : public QWidget {
  public:
    explicit WaveformView(QWidget* parent = nullptr);

    /// Asked once a frame; without one the level is 0.
    void setLevelProvider(LevelProvider provider) { levelProvider_ = std::move(provider); }
    void setSurroundings(WaveformPainter::Surroundings surroundings);

    /// Begins the animation anew, from level 0.
    void start();
    void stop();
    bool isRunning() const { return timer_.isActive(); }

    /// The level as the ribbon shows it: it follows the input fast upwards and gently downwards.
    double level() const { return lvl_; }
    static double smoothed(double level, double input);

  private:
    void paintEvent(QPaintEvent* event) override;
    void showNextFrame();
    void waitForNextFrame();

    LevelProvider levelProvider_;
    QTimer timer_;
    QElapsedTimer t0_;
    qint64 framesShown_ = 0;  // since t0_, those that were left out included
    double lvl_ = 0;
    WaveformPainter painter_;
    WaveformPainter::Surroundings surroundings_ = WaveformPainter::Surroundings::Transparent;
};

}  // namespace parlivo
