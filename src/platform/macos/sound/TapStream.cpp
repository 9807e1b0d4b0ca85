// SPDX-License-Identifier: MIT
#include "platform/macos/sound/TapStream.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace parlivo {

namespace {

/// How long after its end a recording still waits for its last sound.
constexpr std::chrono::milliseconds tailLimit{150};

}  // namespace

TapStream::TapStream(const AudioFormat& format, AudioCapture::Tap tap,
                     AudioCapture::Interruption interruption)
    : channels_(static_cast<std::size_t>(format.channels)),
      interleaved_(AudioCapture::blockFrames * channels_),
      assembler_(format.channels, std::move(tap)),
      arrivals_(format.sampleRate),
      interruption_(std::move(interruption)) {}

void TapStream::append(const float* const* channels, std::size_t stride, std::size_t frames,
                       Clock::TimePoint capturedAt) {
    const std::lock_guard lock(mutex_);
    if (ended_) return;
    for (std::size_t done = 0; done < frames;) {
        const std::size_t part = std::min(frames - done, AudioCapture::blockFrames);
        for (std::size_t frame = 0; frame < part; ++frame)
            for (std::size_t channel = 0; channel < channels_; ++channel)
                interleaved_[frame * channels_ + channel] = channels[channel][(done + frame) * stride];
        assembler_.append(interleaved_.data(), part);
        done += part;
    }
    received_ += frames;
    arrivals_.arrived(received_, capturedAt);
    changed_.notify_all();
}

void TapStream::interrupt() {
    AudioCapture::Interruption report;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(ended_, true)) return;
        assembler_.flush();
        report = std::exchange(interruption_, nullptr);
        changed_.notify_all();
    }
    if (report) report();
}

void TapStream::finish(Clock::TimePoint end) {
    std::unique_lock lock(mutex_);
    if (ended_) return;
    if (const auto frames = arrivals_.framesBefore(end)) assembler_.cutAt(*frames);
    changed_.wait_until(lock, end + tailLimit, [this] { return ended_ || assembler_.isComplete(); });
    if (std::exchange(ended_, true)) return;
    assembler_.flush();
}

}  // namespace parlivo
