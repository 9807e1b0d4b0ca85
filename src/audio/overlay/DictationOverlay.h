// SPDX-License-Identifier: MIT
#pragma once

#include "audio/overlay/WaveformView.h"
#include "platform/FloatingPanel.h"

#include <memory>

namespace parlivo {

/// The small card that floats over everything near the bottom of the main screen while the user dictates. It
/// never takes the focus, and clicks go through it. Main thread.
class DictationOverlay {
  public:
    DictationOverlay();
    ~DictationOverlay();
    DictationOverlay(const DictationOverlay&) = delete;
    DictationOverlay& operator=(const DictationOverlay&) = delete;

    /// Where the ribbon reads the input level, in this and every later showing.
    void setLevelProvider(LevelProvider provider);
    /// The recording has ended: until the next showing the ribbon rests and hears nothing.
    void rest();

    /// Shows the card, or starts its animation anew. Does nothing where the desktop has no way to show a
    /// panel without giving it the focus.
    void show();
    void hide();

    /// What the card shows; made at the first showing and kept.
    const WaveformView* waveView() const { return waveView_.get(); }

  private:
    LevelProvider levelProvider_;
    std::unique_ptr<FloatingPanel> panel_;
    std::unique_ptr<WaveformView> waveView_;
};

}  // namespace parlivo
