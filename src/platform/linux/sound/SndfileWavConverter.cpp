#include "platform/linux/sound/SndfileWavConverter.h"

#include "support/Error.h"

#include <QFile>
#include <QScopeGuard>

#include <fcntl.h>
#include <sndfile.h>
#include <soxr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

namespace parlivo {

namespace {

constexpr int outputRate = 16'000;
/// What is read at a time, of all channels together.
constexpr std::size_t blockSamples = 16'384;
/// Far beyond any sound, near enough that one broken sample does not drown its neighbours in the filter.
constexpr float sampleLimit = 16.0F;

struct SoundFileRelease {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, SoundFileRelease>;

struct ResamplerRelease {
    void operator()(soxr_t resampler) const { soxr_delete(resampler); }
};
using Resampler = std::unique_ptr<soxr, ResamplerRelease>;

[[noreturn]] void fail(const char* reason) {
    throw Error(ErrorCode::ConversionFailed,
                QStringLiteral("afconvert fallito: ") + QString::fromLocal8Bit(reason));
}

SoundFile openSource(const QString& path, SF_INFO& info) {
    SoundFile file(sf_open(QFile::encodeName(path).constData(), SFM_READ, &info));
    if (!file) fail(sf_strerror(nullptr));
    return file;
}

/// A new file that only the user can read, in the place of any other.
int createPrivateFile(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    ::unlink(name.constData());
    const int descriptor = ::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0) fail(std::strerror(errno));
    return descriptor;
}

/// Owns the descriptor from now on.
SoundFile openDestination(int descriptor) {
    SF_INFO info{};
    info.samplerate = outputRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SoundFile file(sf_open_fd(descriptor, SFM_WRITE, &info, SF_TRUE));
    if (!file) fail(sf_strerror(nullptr));
    return file;
}

Resampler makeResampler(double inputRate) {
    const soxr_io_spec_t samples = [] {
        soxr_io_spec_t spec = soxr_io_spec(SOXR_FLOAT32_I, SOXR_INT16_I);
        spec.flags |= SOXR_NO_DITHER;  // silence stays silence
        return spec;
    }();
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    soxr_error_t error = nullptr;
    Resampler resampler(soxr_create(inputRate, outputRate, 1, &error, &samples, &quality, nullptr));
    if (!resampler) fail(soxr_strerror(error));
    return resampler;
}

/// A sample that the filter can digest: what is no number becomes silence.
float digestible(float sample) {
    return std::isnan(sample) ? 0.0F : std::clamp(sample, -sampleLimit, sampleLimit);
}

/// Averages interleaved channels into one.
void mixDown(std::span<const float> samples, std::size_t channels, std::span<float> mono) {
    const float share = 1.0F / static_cast<float>(channels);
    for (std::size_t frame = 0; frame < mono.size(); ++frame) {
        float sum = 0;
        for (std::size_t channel = 0; channel < channels; ++channel)
            sum += digestible(samples[frame * channels + channel]);
        mono[frame] = sum * share;
    }
}

/// The road of one file: read, mix down, resample, write.
class Conversion {
  public:
    Conversion(SNDFILE* source, const SF_INFO& info, SNDFILE* destination)
        : source_(source),
          destination_(destination),
          channels_(static_cast<std::size_t>(info.channels)),
          resampler_(makeResampler(info.samplerate)),
          mono_(std::max(blockSamples / channels_, std::size_t{1})),
          samples_(mono_.size() * channels_),
          output_(blockSamples) {}

    void run() {
        while (const std::size_t frames = read()) resample({mono_.data(), frames});
        if (sf_error(source_) != SF_ERR_NO_ERROR) fail(sf_strerror(source_));
        finish();
    }

  private:
    std::size_t read() {
        const sf_count_t frames =
            sf_readf_float(source_, samples_.data(), static_cast<sf_count_t>(mono_.size()));
        if (frames <= 0) return 0;
        const auto count = static_cast<std::size_t>(frames);
        mixDown(samples_, channels_, {mono_.data(), count});
        return count;
    }

    void resample(std::span<const float> input) {
        while (!input.empty()) input = input.subspan(pass(input.data(), input.size()).taken);
    }

    /// Lets out what the filter still holds.
    void finish() {
        while (pass(nullptr, 0).given > 0) {
        }
    }

    struct Passed {
        std::size_t taken = 0;
        std::size_t given = 0;
    };
    Passed pass(const float* input, std::size_t frames) {
        Passed passed;
        if (const soxr_error_t error = soxr_process(resampler_.get(), input, frames, &passed.taken,
                                                    output_.data(), output_.size(), &passed.given))
            fail(soxr_strerror(error));
        write({output_.data(), passed.given});
        return passed;
    }

    void write(std::span<const std::int16_t> samples) {
        const auto count = static_cast<sf_count_t>(samples.size());
        if (sf_writef_short(destination_, samples.data(), count) != count) fail(sf_strerror(destination_));
    }

    SNDFILE* const source_;
    SNDFILE* const destination_;
    const std::size_t channels_;
    const Resampler resampler_;
    std::vector<float> mono_;
    std::vector<float> samples_;  // of all channels, as many frames
    std::vector<std::int16_t> output_;
};

/// Closing writes the lengths into the header.
void close(SoundFile file) {
    if (const int error = sf_close(file.release())) fail(sf_error_number(error));
}

}  // namespace

void SndfileWavConverter::convert(const QString& source, const QString& destination) {
    SF_INFO info{};
    const SoundFile input = openSource(source, info);
    const int descriptor = createPrivateFile(destination);
    auto discard = qScopeGuard([&] { QFile::remove(destination); });
    SoundFile output = openDestination(descriptor);
    Conversion(input.get(), info, output.get()).run();
    close(std::move(output));
    discard.dismiss();
}

}  // namespace parlivo
