// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>

namespace parlivo {

/// What a source of sound delivers: 32-bit float samples, interleaved.
struct AudioFormat {
    double sampleRate = 0;  ///< frames a second
    int channels = 0;

    bool usable() const { return sampleRate > 0 && channels > 0; }
};

/// One recording of the default microphone. Destroying it stops capture.
class AudioCapture {
  public:
    /// One block of interleaved samples, `frames × channels` long. All blocks hold `blockFrames` frames but
    /// the last. Called on the audio thread: must neither block nor allocate beyond what writing a file
    /// needs.
    using Tap = std::function<void(std::span<const float> samples, std::size_t frames)>;
    /// The source went away by itself (device removed, server gone). Called once, on the audio thread; no tap
    /// follows.
    using Interruption = std::function<void()>;

    static constexpr std::size_t blockFrames = 4096;

    virtual ~AudioCapture() = default;

    /// The source's own format; known from the beginning.
    virtual AudioFormat format() const = 0;

    /// Begins to deliver. Throws Error (the system's own text) when the stream cannot be started. Returns
    /// when the system has taken the order; sound from then on is captured.
    virtual void start(Tap tap, Interruption interruption) = 0;

    /// Ends the recording at `end`: sound that was spoken before it is still delivered (waited for 150 ms at
    /// most), what came later is cut off, the last block may be short. No tap is called once this has
    /// returned. Main thread.
    virtual void stop(Clock::TimePoint end) = 0;
};

/// The microphone.
class AudioInput {
  public:
    virtual ~AudioInput() = default;

    /// Looks up the default microphone afresh and opens it, without capturing yet. nullptr if there is no
    /// microphone (no sound server, no source, a source without rate or channels). Returns within about a
    /// second, at once while a sound server is known to hang.
    virtual std::unique_ptr<AudioCapture> open() = 0;
};

}  // namespace parlivo
