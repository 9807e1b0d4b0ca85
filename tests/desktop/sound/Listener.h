// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/sound/PulseAudioInput.h"
#include "platform/linux/sound/PulseMicrophone.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace parlivo::desktop {

inline constexpr std::size_t oneSecond = 48'000;  // frames

/// Opens the microphone without knowing anything of the server.
struct Opened {
    PulseMicrophone microphone;
    std::unique_ptr<AudioCapture> capture = PulseAudioInput(microphone).open();
};

inline bool microphoneOpens() {
    return Opened().capture != nullptr;
}

/// The first answer of a server that was never asked before.
inline MicrophoneStatus askedMicrophone() {
    PulseMicrophone microphone;
    EXPECT_EQ(microphone.status(), MicrophoneStatus::NotAsked) << "waited for the server";
    const QObject owner;
    MicrophoneStatus answer = MicrophoneStatus::NotAsked;
    microphone.observe(&owner, [&](MicrophoneStatus status) { answer = status; });
    EXPECT_TRUE(waitFor([&] { return answer != MicrophoneStatus::NotAsked; }));
    EXPECT_EQ(microphone.status(), answer);
    return answer;
}

/// A running capture and what it delivered.
class Listener {
  public:
    Listener() : capture_(PulseAudioInput(microphone_).open()) {
        EXPECT_TRUE(capture_) << "no microphone";
        if (capture_) begin();
    }
    ~Listener() = default;
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    bool hears(std::size_t frames) {
        return waitFor([&] { return frames_ >= frames; });
    }
    bool hearsSound() {
        return waitFor([&] { return sounded_.load(); });
    }
    void stop(Clock::TimePoint end = Clock::now()) { capture_->stop(end); }
    void close() { capture_.reset(); }

    int interruptions() const { return interruptions_; }
    std::size_t frames() const { return frames_; }
    std::vector<std::size_t> blocks() const {
        const std::lock_guard lock(mutex_);
        return blocks_;
    }
    std::vector<float> firstChannel() const {
        const std::lock_guard lock(mutex_);
        return samples_;
    }

  private:
    void begin() {
        capture_->start([this](std::span<const float> samples, std::size_t frames) { take(samples, frames); },
                        [this] { ++interruptions_; });
    }
    void take(std::span<const float> samples, std::size_t frames) {
        const std::lock_guard lock(mutex_);
        for (std::size_t i = 0; i < samples.size(); i += samples.size() / frames) {
            samples_.push_back(samples[i]);
            if (samples[i] != 0) sounded_ = true;
        }
        blocks_.push_back(frames);
        frames_ += frames;
    }

    mutable std::mutex mutex_;
    std::vector<float> samples_;       // under mutex_
    std::vector<std::size_t> blocks_;  // under mutex_
    std::atomic<std::size_t> frames_ = 0;
    std::atomic<bool> sounded_ = false;
    std::atomic<int> interruptions_ = 0;
    PulseMicrophone microphone_;
    std::unique_ptr<AudioCapture> capture_;  // last: its tap uses what stands above
};

}  // namespace parlivo::desktop
