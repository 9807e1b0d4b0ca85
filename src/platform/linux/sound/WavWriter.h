// SPDX-License-Identifier: MIT
#pragma once

#include "support/SoundFile.h"

#include <QString>

#include <soxr.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace parlivo {

/// Writes sound of any rate and any number of channels into a WAV for the recogniser: averages the channels,
/// resamples to 16,000 Hz with libsoxr, writes 16 bits with libsndfile. Works block by block, so a long
/// recording needs no more memory than a short one.
///
/// Errors are thrown as Error ConversionFailed, with the libraries' own words. The file is deleted at the end
/// of this object unless keep() was called. One thread at a time.
class WavWriter {
  public:
    /// So many samples, of all channels together, are worked on at a time.
    static constexpr std::size_t blockSamples = 16'384;

    /// Creates the file with mode 0600, in the place of any other.
    WavWriter(QString path, double inputRate, int channels);
    ~WavWriter();
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    /// Appends interleaved frames. Allocates nothing of its own.
    void append(std::span<const float> samples);
    /// Writes what the filter still holds, and closes the file.
    void finish();
    void keep() { kept_ = true; }

  private:
    struct ResamplerDelete {
        void operator()(soxr_t resampler) const { soxr_delete(resampler); }
    };
    struct Passed {
        std::size_t taken = 0;
        std::size_t given = 0;
    };

    void resample(std::span<const float> mono);
    Passed pass(const float* input, std::size_t frames);
    void write(std::span<const std::int16_t> samples);

    const QString path_;
    SoundFile file_;
    const std::size_t channels_;
    std::unique_ptr<soxr, ResamplerDelete> resampler_;
    std::vector<float> mono_;
    std::vector<std::int16_t> output_;
    bool kept_ = false;
};

}  // namespace parlivo
