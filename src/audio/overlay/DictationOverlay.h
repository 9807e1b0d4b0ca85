#pragma once

#include "audio/overlay/WaveformView.h"

#include <QWidget>

#include <memory>

namespace parlivo {

/// The small card that floats over everything near the bottom of the main screen while the user dictates. It
/// never takes the focus, and clicks go through it. Main thread.
class DictationOverlay {
  public:
    DictationOverlay() = default;
    ~DictationOverlay();
    DictationOverlay(const DictationOverlay&) = delete;
    DictationOverlay& operator=(const DictationOverlay&) = delete;

    /// Where the ribbon reads the input level, in this and every later showing.
    void setLevelProvider(LevelProvider provider);
    /// The ribbon shows silence until the next showing.
    void clearWaveLevelProvider();

    /// Shows the card, or starts its animation anew. It keeps its last place when there is no screen.
    void show();
    void hide();

    /// The window and what it shows; made at the first showing and kept.
    const QWidget* panel() const { return panel_.get(); }
    const WaveformView* waveView() const { return waveView_; }

  private:
    void createPanel();
    void place();
    void fitToDesktop();

    LevelProvider levelProvider_;
    std::unique_ptr<QWidget> panel_;
    WaveformView* waveView_ = nullptr;  // a child of the panel
};

}  // namespace parlivo
