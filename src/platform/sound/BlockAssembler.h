// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace parlivo {

/// Makes blocks of exactly AudioCapture::blockFrames frames out of the pieces that a sound server delivers,
/// and cuts the recording at a given frame. One thread at a time; allocates only when it is made.
class BlockAssembler {
  public:
    BlockAssembler(int channels, AudioCapture::Tap tap);

    /// Appends `frames` frames of interleaved samples; a null pointer stands for silence.
    void append(const float* samples, std::size_t frames);
    /// Ends the recording with this many frames counted from its beginning. Blocks already delivered stay
    /// delivered.
    void cutAt(std::uint64_t frames);
    /// Whether the cut has been reached.
    bool isComplete() const { return received_ >= cut_; }
    /// Delivers the frames of the unfinished block as a short block.
    void flush();

  private:
    void fill(const float* samples, std::size_t frames);
    void deliver();

    const std::size_t channels_;
    const AudioCapture::Tap tap_;
    std::vector<float> block_;
    std::size_t filled_ = 0;  // frames in block_
    std::uint64_t received_ = 0;
    std::uint64_t cut_ = UINT64_MAX;
};

}  // namespace parlivo
