// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <span>

namespace parlivo {

/// A WAV that is written while its sound is still being recorded. It deletes its file at its end unless
/// keep() was called.
class WavStream {
  public:
    virtual ~WavStream() = default;

    /// Converts interleaved samples, `frames × channels` long. For the audio thread: allocates nothing beyond
    /// what writing a file needs. A failure is reported by finish().
    virtual void append(std::span<const float> samples, std::size_t frames) noexcept = 0;
    /// Completes and closes the file; nothing can be appended any more. Returns within a millisecond, however
    /// long the recording is. Throws Error ConversionFailed when anything failed since the beginning.
    virtual void finish() = 0;
    /// The file stays from now on. After finish().
    virtual void keep() = 0;
};

/// Turns a recording into the WAV that the recogniser takes: RIFF/WAVE, 16-bit little-endian PCM, 16,000 Hz,
/// mono.
class WavConverter {
  public:
    virtual ~WavConverter() = default;

    /// Converts the capture file `source` into `destination` (replaced if there, mode 0600). Blocks; not on
    /// the main thread. Throws Error ConversionFailed with the converter's own words; no partial destination
    /// is left then.
    virtual void convert(const QString& source, const QString& destination) = 0;

    /// Begins to write `destination` from sound of this format that is about to be recorded. nullptr when
    /// that is not possible; convert() then does the work afterwards. The default is for a system whose
    /// converter takes only whole files. Main thread.
    virtual std::unique_ptr<WavStream> convertWhileRecording(const AudioFormat& /*format*/,
                                                             const QString& /*destination*/) {
        return nullptr;
    }
};

}  // namespace parlivo
