// SPDX-License-Identifier: MIT
#include "platform/linux/sound/WavWriter.h"

#include "platform/linux/sound/ConversionError.h"
#include "support/FileLock.h"
#include "support/OwnerOnly.h"
#include "support/UniqueFd.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <utility>

namespace parlivo {

namespace {

constexpr int outputRate = 16'000;
/// Far beyond any sound, near enough that one broken sample does not drown its neighbours in the filter.
constexpr float sampleLimit = 16.0F;

/// A new file that only the user can read, in the place of any other.
int createPrivateFile(const QString& path) {
    UniqueFd descriptor = createLockedFile(path, ownerOnlyMode);
    if (!descriptor && errno == EEXIST && QFile::remove(path)) {
        descriptor = createLockedFile(path, ownerOnlyMode);
    }
    if (!descriptor) throw conversionError(Error::meaning(errno));
    return descriptor.release();
}

/// Owns the descriptor from now on.
SoundFile openForWriting(int descriptor) {
    SF_INFO info{};
    info.samplerate = outputRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    errno = 0;
    SoundFile file(sf_open_fd(descriptor, SFM_WRITE, &info, SF_TRUE));
    if (!file) throw soundFileError(nullptr, errno);
    return file;
}

soxr_t makeResampler(double inputRate) {
    soxr_io_spec_t samples = soxr_io_spec(SOXR_FLOAT32_I, SOXR_INT16_I);
    samples.flags |= SOXR_NO_DITHER;  // silence stays silence
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    soxr_error_t error = nullptr;
    soxr_t resampler = soxr_create(inputRate, outputRate, 1, &error, &samples, &quality, nullptr);
    if (!resampler) throw resamplingError(soxr_strerror(error));
    return resampler;
}

/// A sample that the filter can take: what is not a number becomes silence.
float limited(float sample) {
    return std::isnan(sample) ? 0.0F : std::clamp(sample, -sampleLimit, sampleLimit);
}

/// Averages interleaved channels into one.
void mixDown(std::span<const float> samples, std::size_t channels, std::span<float> mono) {
    const float share = 1.0F / static_cast<float>(channels);
    for (std::size_t frame = 0; frame < mono.size(); ++frame) {
        float sum = 0;
        for (std::size_t channel = 0; channel < channels; ++channel)
            sum += limited(samples[frame * channels + channel]);
        mono[frame] = sum * share;
    }
}

}  // namespace

WavWriter::WavWriter(QString path, double inputRate, int channels)
    : path_(std::move(path)),
      channels_(static_cast<std::size_t>(channels)),
      resampler_(makeResampler(inputRate)),
      mono_(std::max(blockSamples / channels_, std::size_t{1})),
      output_(blockSamples) {
    const int descriptor = createPrivateFile(path_);
    try {
        file_ = openForWriting(descriptor);
    } catch (...) {
        QFile::remove(path_);
        throw;
    }
}

WavWriter::~WavWriter() {
    if (!kept_) QFile::remove(path_);
}

void WavWriter::append(std::span<const float> samples) {
    while (!samples.empty()) {
        const std::size_t frames = std::min(samples.size() / channels_, mono_.size());
        mixDown(samples, channels_, {mono_.data(), frames});
        resample({mono_.data(), frames});
        samples = samples.subspan(frames * channels_);
    }
}

void WavWriter::finish() {
    while (pass(nullptr, 0).given > 0) {
    }
    // Closing writes the lengths into the header.
    errno = 0;
    if (const int error = sf_close(file_.release()))
        throw conversionError(soundFileMeaning(error, errno), sf_error_number(error));
}

void WavWriter::resample(std::span<const float> mono) {
    while (!mono.empty()) mono = mono.subspan(pass(mono.data(), mono.size()).taken);
}

WavWriter::Passed WavWriter::pass(const float* input, std::size_t frames) {
    Passed passed;
    if (const soxr_error_t error = soxr_process(resampler_.get(), input, frames, &passed.taken,
                                                output_.data(), output_.size(), &passed.given))
        throw resamplingError(soxr_strerror(error));
    write({output_.data(), passed.given});
    return passed;
}

void WavWriter::write(std::span<const std::int16_t> samples) {
    const auto count = static_cast<sf_count_t>(samples.size());
    errno = 0;
    if (sf_writef_short(file_.get(), samples.data(), count) != count)
        throw soundFileError(file_.get(), errno);
}

}  // namespace parlivo
