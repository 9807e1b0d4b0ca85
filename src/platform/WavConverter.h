#pragma once

#include <QString>

namespace parlivo {

/// Turns a capture file into the WAV that the recogniser takes: RIFF/WAVE, 16-bit little-endian PCM, 16,000
/// Hz, mono.
class WavConverter {
  public:
    virtual ~WavConverter() = default;

    /// Converts `source` into `destination` (replaced if there, mode 0600). Blocks; not on the main thread.
    /// Throws Error ConversionFailed with the converter's own words; no partial destination is left then.
    virtual void convert(const QString& source, const QString& destination) = 0;
};

}  // namespace parlivo
