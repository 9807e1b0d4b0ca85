// SPDX-License-Identifier: MIT
#include "platform/sound/BlockAssembler.h"

#include <algorithm>
#include <utility>

namespace parlivo {

BlockAssembler::BlockAssembler(int channels, AudioCapture::Tap tap)
    : channels_(static_cast<std::size_t>(channels)),
      tap_(std::move(tap)),
      block_(AudioCapture::blockFrames * channels_) {}

void BlockAssembler::append(const float* samples, std::size_t frames) {
    frames = static_cast<std::size_t>(std::min<std::uint64_t>(frames, cut_ - std::min(cut_, received_)));
    while (frames > 0) {
        const std::size_t piece = std::min(frames, AudioCapture::blockFrames - filled_);
        fill(samples, piece);
        if (samples) samples += piece * channels_;
        frames -= piece;
    }
}

void BlockAssembler::fill(const float* samples, std::size_t frames) {
    float* const target = block_.data() + filled_ * channels_;
    if (samples) {
        std::copy_n(samples, frames * channels_, target);
    } else {
        std::fill_n(target, frames * channels_, 0.0F);
    }
    filled_ += frames;
    received_ += frames;
    if (filled_ == AudioCapture::blockFrames) deliver();
}

void BlockAssembler::cutAt(std::uint64_t frames) {
    cut_ = frames;
    const std::uint64_t surplus = received_ - std::min(received_, cut_);
    filled_ -= static_cast<std::size_t>(std::min<std::uint64_t>(surplus, filled_));
}

void BlockAssembler::flush() {
    if (filled_ > 0) deliver();
}

void BlockAssembler::deliver() {
    const std::size_t frames = std::exchange(filled_, 0);
    tap_({block_.data(), frames * channels_}, frames);
}

}  // namespace parlivo
