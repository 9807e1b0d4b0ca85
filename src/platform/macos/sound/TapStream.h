// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"
#include "platform/sound/ArrivalClock.h"
#include "platform/sound/BlockAssembler.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace parlivo {

/// What a tap delivers, on its way to the port's blocks. The tap's thread appends, another one ends it.
class TapStream {
  public:
    TapStream(const AudioFormat& format, AudioCapture::Tap tap, AudioCapture::Interruption interruption);

    /// One buffer of the tap: a pointer for each channel, whose samples lie `stride` apart. Its last frame
    /// was captured at the moment `capturedAt`. Allocates nothing.
    void append(const float* const* channels, std::size_t stride, std::size_t frames,
                Clock::TimePoint capturedAt);

    /// The source has gone: delivers what there is and reports it, once. Nothing is taken afterwards.
    void interrupt();

    /// Waits until what was captured before `end` has arrived, but no longer than the port allows, and
    /// delivers it. Nothing is taken afterwards.
    void finish(Clock::TimePoint end);

  private:
    std::mutex mutex_;  // over all that follows
    std::condition_variable changed_;
    const std::size_t channels_;
    std::vector<float> interleaved_;
    BlockAssembler assembler_;
    ArrivalClock arrivals_;
    AudioCapture::Interruption interruption_;
    std::uint64_t received_ = 0;
    bool ended_ = false;
};

}  // namespace parlivo
