// SPDX-License-Identifier: MIT
#include "platform/macos/sound/EngineAudioInput.h"

#include "platform/macos/base/Errors.h"
#include "platform/macos/sound/TapStream.h"

#include <AVFoundation/AVFoundation.h>
#include <mach/mach_time.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace parlivo {

namespace {

constexpr AVAudioNodeBus inputBus = 0;

/// When the last frame of a buffer was captured. The buffer itself comes later, by what the hardware and the
/// system take.
Clock::TimePoint capturedAt(AVAudioTime* beginning, double seconds) {
    const auto now = Clock::now();
    if (!beginning.hostTimeValid) return now;
    const double age = [AVAudioTime secondsForHostTime:mach_absolute_time()] -
                       [AVAudioTime secondsForHostTime:beginning.hostTime] - seconds;
    return now -
           std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(std::max(age, 0.0)));
}

class EngineCapture : public AudioCapture {
  public:
    explicit EngineCapture(AVAudioEngine* engine)
        : engine_(engine), input_(engine.inputNode), inputFormat_([input_ outputFormatForBus:inputBus]) {}
    ~EngineCapture() override { tearDown(); }
    EngineCapture(const EngineCapture&) = delete;
    EngineCapture& operator=(const EngineCapture&) = delete;

    AudioFormat format() const override {
        return {inputFormat_.sampleRate, static_cast<int>(inputFormat_.channelCount)};
    }

    void start(Tap tap, Interruption interruption) override {
        stream_ = std::make_shared<TapStream>(format(), std::move(tap), std::move(interruption));
        installTap();
        watchForInterruption();
        NSError* error = nil;
        if ([engine_ startAndReturnError:&error]) return;
        tearDown();
        throw fromNSError(error);
    }

    void stop(Clock::TimePoint end) override {
        if (stream_) stream_->finish(end);
        tearDown();
    }

  private:
    void installTap() {
        const std::weak_ptr<TapStream> weak = stream_;
        const double rate = inputFormat_.sampleRate;
        [input_ installTapOnBus:inputBus
                     bufferSize:blockFrames
                         format:inputFormat_
                          block:^(AVAudioPCMBuffer* buffer, AVAudioTime* when) {
                            const auto stream = weak.lock();
                            if (!stream || buffer.floatChannelData == nullptr) return;
                            const std::size_t frames = buffer.frameLength;
                            stream->append(buffer.floatChannelData, buffer.stride, frames,
                                           capturedAt(when, static_cast<double>(frames) / rate));
                          }];
    }

    /// The system stops an engine whose device goes away or changes its format, and tells it like this.
    void watchForInterruption() {
        const std::weak_ptr<TapStream> weak = stream_;
        observer_ = [NSNotificationCenter.defaultCenter
            addObserverForName:AVAudioEngineConfigurationChangeNotification
                        object:engine_
                         queue:nil
                    usingBlock:^(NSNotification*) {
                      if (const auto stream = weak.lock()) stream->interrupt();
                    }];
    }

    void tearDown() {
        if (!stream_) return;
        [NSNotificationCenter.defaultCenter removeObserver:observer_];
        observer_ = nil;
        [input_ removeTapOnBus:inputBus];
        [engine_ stop];
        stream_.reset();
    }

    AVAudioEngine* engine_;
    AVAudioInputNode* input_;
    AVAudioFormat* inputFormat_;
    id<NSObject> observer_ = nil;
    std::shared_ptr<TapStream> stream_;  // while capture runs
};

}  // namespace

std::unique_ptr<AudioCapture> EngineAudioInput::open() {
    auto capture = std::make_unique<EngineCapture>([[AVAudioEngine alloc] init]);
    if (!capture->format().usable()) return nullptr;
    return capture;
}

}  // namespace parlivo
