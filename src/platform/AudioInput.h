// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <vector>

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

/// A microphone that the user can choose.
struct Microphone {
    QString id;    ///< the system's own, the same after a restart
    QString name;  ///< as the system shows it

    bool operator==(const Microphone&) const = default;
};

/// The microphone.
class AudioInput {
  public:
    virtual ~AudioInput() = default;

    /// Whether one microphone of several can be chosen here; if not, the system's own settings are the place.
    virtual bool offersChoice() const { return false; }
    /// Those that can be chosen, in the system's order; empty if the system does not answer. Any thread; may
    /// block for about a second.
    virtual std::vector<Microphone> microphones() { return {}; }
    /// From now on open() takes the microphone with this id while it is there. Empty: the system's choice.
    /// Any thread.
    virtual void choose(const QString&) {}

    /// Looks up the chosen microphone, or else the default one, afresh and opens it, without capturing yet.
    /// nullptr if there is no microphone (no sound server, no source, a source without rate or channels).
    /// Returns within about a second, at once while a sound server is known to hang.
    virtual std::unique_ptr<AudioCapture> open() = 0;
};

}  // namespace parlivo
