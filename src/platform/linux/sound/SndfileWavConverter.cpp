// SPDX-License-Identifier: MIT
#include "platform/linux/sound/SndfileWavConverter.h"

#include "platform/linux/sound/ConversionError.h"
#include "platform/linux/sound/WavWriter.h"
#include "support/SoundFile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <vector>

namespace parlivo {

namespace {

SoundFile openForReading(const QString& path, SF_INFO& info) {
    errno = 0;
    SoundFile file(sf_open(QFile::encodeName(path).constData(), SFM_READ, &info));
    if (!file) throw soundFileError(nullptr, errno);
    return file;
}

void readInto(WavWriter& wav, SNDFILE* source, std::size_t channels) {
    const std::size_t frames = std::max(WavWriter::blockSamples / channels, std::size_t{1});
    std::vector<float> samples(frames * channels);
    sf_count_t got = 0;
    while ((got = sf_readf_float(source, samples.data(), static_cast<sf_count_t>(frames))) > 0)
        wav.append({samples.data(), static_cast<std::size_t>(got) * channels});
    if (sf_error(source) != SF_ERR_NO_ERROR) throw soundFileError(source, 0);
}

class LiveWav : public WavStream {
  public:
    LiveWav(const AudioFormat& format, const QString& destination)
        : wav_(destination, format.sampleRate, format.channels) {}

    void append(std::span<const float> samples, std::size_t /*frames*/) noexcept override {
        if (failure_) return;
        try {
            wav_.append(samples);
        } catch (const Error& error) {
            failure_ = error;
        }
    }
    void finish() override {
        if (failure_) throw Error(*failure_);
        wav_.finish();
    }
    void keep() override { wav_.keep(); }

  private:
    WavWriter wav_;
    std::optional<Error> failure_;
};

}  // namespace

void SndfileWavConverter::convert(const QString& source, const QString& destination) {
    SF_INFO info{};
    const SoundFile input = openForReading(source, info);
    WavWriter wav(destination, info.samplerate, info.channels);
    readInto(wav, input.get(), static_cast<std::size_t>(info.channels));
    wav.finish();
    wav.keep();
}

std::unique_ptr<WavStream> SndfileWavConverter::convertWhileRecording(const AudioFormat& format,
                                                                      const QString& destination) {
    try {
        return std::make_unique<LiveWav>(format, destination);
    } catch (const Error&) {
        // convert() meets the same obstacle and says so.
        return nullptr;
    }
}

}  // namespace parlivo
