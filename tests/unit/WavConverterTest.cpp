// SPDX-License-Identifier: MIT
#include "platform/linux/sound/SndfileWavConverter.h"
#include "support/Error.h"
#include "support/Errors.h"
#include "support/FileSizeLimit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>

#include <gmock/gmock.h>
#include <sndfile.hh>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <vector>

namespace parlivo {
namespace {

using Samples = std::vector<std::int16_t>;

class WavConverterTest : public testing::Test {
  protected:
    QString path(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }

    /// A capture file whose sample at (frame, channel) is `shape`'s.
    QString capture(int rate, int channels, int frames, const std::function<float(int, int)>& shape) const {
        QString file = path("capture.caf");
        SndfileHandle out(file.toStdString(), SFM_WRITE, SF_FORMAT_CAF | SF_FORMAT_FLOAT, channels, rate);
        std::vector<float> samples;
        for (int frame = 0; frame < frames; ++frame)
            for (int channel = 0; channel < channels; ++channel) samples.push_back(shape(frame, channel));
        out.writef(samples.data(), frames);
        return file;
    }

    static std::function<float(int, int)> tone(double hertz, int rate, float amplitude) {
        return [=](int frame, int) {
            const double phase = 2 * std::numbers::pi * hertz * frame / rate;
            return amplitude * static_cast<float>(std::sin(phase));
        };
    }

    Samples convert(const QString& source) {
        const QString wav = path("out.wav");
        converter.convert(source, wav);
        SndfileHandle file(wav.toStdString());
        EXPECT_EQ(file.format(), SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        EXPECT_EQ(file.samplerate(), 16'000);
        EXPECT_EQ(file.channels(), 1);
        Samples samples(static_cast<std::size_t>(file.frames()));
        file.readf(samples.data(), file.frames());
        return samples;
    }

    /// The words of the failure; there must be one, and it must leave no file.
    QString failure(const QString& source, const QString& destination) {
        try {
            converter.convert(source, destination);
        } catch (const Error& error) {
            EXPECT_TRUE(isError(error, ErrorCode::ConversionFailed));
            EXPECT_FALSE(QFileInfo(destination).isFile());
            return error.localizedDescription();
        }
        ADD_FAILURE() << "converted";
        return {};
    }

    /// Amplitude of one frequency, by the Goertzel algorithm, as a share of full scale.
    static double amplitudeOf(double hertz, const Samples& samples) {
        const double factor = 2 * std::cos(2 * std::numbers::pi * hertz / 16'000);
        double last = 0;
        double beforeLast = 0;
        for (const auto sample : samples) {
            const double next = sample + factor * last - beforeLast;
            beforeLast = last;
            last = next;
        }
        const double power = last * last + beforeLast * beforeLast - factor * last * beforeLast;
        return std::sqrt(power) * 2 / static_cast<double>(samples.size()) / 32'768;
    }

    QTemporaryDir folder;
    SndfileWavConverter converter;
};

TEST_F(WavConverterTest, AToneComesThroughAtItsPitchAndLoudness) {
    for (const int rate : {8'000, 16'000, 22'050, 44'100, 48'000, 96'000, 192'000}) {
        const Samples out = convert(capture(rate, 1, rate, tone(1'000, rate, 0.5F)));
        EXPECT_EQ(out.size(), 16'000U) << rate << " Hz";
        EXPECT_NEAR(amplitudeOf(1'000, out), 0.5, 0.005) << rate << " Hz";
    }
}

TEST_F(WavConverterTest, SamplesKeepTheirTime) {
    const Samples out =
        convert(capture(48'000, 1, 48'000, [](int frame, int) { return frame == 24'000 ? 0.9F : 0.0F; }));
    const auto loudest = std::max_element(out.begin(), out.end()) - out.begin();
    EXPECT_EQ(loudest, 8'000);
}

TEST_F(WavConverterTest, WhatTheTargetRateCannotHoldIsFilteredOut) {
    const Samples out = convert(capture(48'000, 1, 48'000, tone(11'000, 48'000, 0.9F)));
    const auto loudest = *std::max_element(out.begin() + 800, out.end() - 800);
    EXPECT_LT(loudest, 4);
}

TEST_F(WavConverterTest, ChannelsAreAveraged) {
    const auto onlyLeft = [](int, int channel) { return channel == 0 ? 0.5F : 0.0F; };
    EXPECT_NEAR(convert(capture(16'000, 2, 16'000, onlyLeft)).at(8'000), 8'192, 4);
    const auto opposite = [](int, int channel) { return channel == 0 ? 0.5F : -0.5F; };
    EXPECT_THAT(convert(capture(48'000, 2, 48'000, opposite)), testing::Each(0));
    const auto rising = [](int, int channel) { return static_cast<float>(channel) / 10; };
    EXPECT_NEAR(convert(capture(48'000, 6, 48'000, rising)).at(8'000), 8'192, 4);
}

TEST_F(WavConverterTest, SilenceStaysSilence) {
    EXPECT_THAT(convert(capture(44'100, 1, 44'100, [](int, int) { return 0.0F; })), testing::Each(0));
}

TEST_F(WavConverterTest, SoundBeyondFullScaleIsSaturated) {
    const Samples out = convert(capture(48'000, 1, 48'000, tone(100, 48'000, 4.0F)));
    EXPECT_EQ(*std::max_element(out.begin(), out.end()), 32'767);
    EXPECT_EQ(*std::min_element(out.begin(), out.end()), -32'768);
    // A wrapped sample would jump by a whole scale between two neighbours.
    int steepest = 0;
    for (std::size_t i = 1; i < out.size(); ++i) steepest = std::max(steepest, std::abs(out[i] - out[i - 1]));
    EXPECT_LT(steepest, 12'000);
}

TEST_F(WavConverterTest, AnInvalidSampleDoesNotChangeTheOthers) {
    const auto speech = tone(1'000, 48'000, 0.25F);
    for (const float broken :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::max()}) {
        Samples out = convert(capture(48'000, 2, 96'000, [&](int frame, int channel) {
            return frame == 1'000 && channel == 1 ? broken : speech(frame, channel);
        }));
        ASSERT_EQ(out.size(), 32'000U);
        out.erase(out.begin(), out.begin() + 16'000);
        EXPECT_NEAR(amplitudeOf(1'000, out), 0.25, 0.002) << broken;
    }
}

TEST_F(WavConverterTest, AnEmptyRecordingGivesAnEmptyWav) {
    EXPECT_TRUE(convert(capture(48'000, 1, 0, nullptr)).empty());
}

TEST_F(WavConverterTest, ASingleFrameIsConverted) {
    EXPECT_LE(convert(capture(48'000, 2, 1, [](int, int) { return 0.5F; })).size(), 1U);
}

TEST_F(WavConverterTest, LengthsAroundTheBlockSizeAreKept) {
    for (const int frames : {16'383, 16'384, 16'385, 32'768, 49'151, 49'153}) {
        const auto out = convert(capture(48'000, 1, frames, tone(500, 48'000, 0.5F)));
        EXPECT_NEAR(static_cast<double>(out.size()), frames / 3.0, 1) << frames << " frames";
    }
}

TEST_F(WavConverterTest, TheHeaderIsTheCanonicalOne) {
    convert(capture(48'000, 1, 48'000, tone(500, 48'000, 0.5F)));
    QFile file(path("out.wav"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    ASSERT_EQ(bytes.size(), 44 + 32'000);
    const auto number = [&](int at) { return qFromLittleEndian<quint32>(bytes.constData() + at); };
    EXPECT_EQ(bytes.mid(0, 4), "RIFF");
    EXPECT_EQ(number(4), 36U + 32'000U);
    EXPECT_EQ(bytes.mid(8, 8), "WAVEfmt ");
    EXPECT_EQ(bytes.mid(20, 4), QByteArray("\x01\x00\x01\x00", 4)) << "PCM, one channel";
    EXPECT_EQ(number(24), 16'000U);
    EXPECT_EQ(number(28), 32'000U) << "bytes a second";
    EXPECT_EQ(bytes.mid(32, 4), QByteArray("\x02\x00\x10\x00", 4)) << "two bytes a frame, 16 bits";
    EXPECT_EQ(bytes.mid(36, 4), "data");
    EXPECT_EQ(number(40), 32'000U);
}

TEST_F(WavConverterTest, OnlyTheUserReadsTheWavEvenInThePlaceOfAnotherFile) {
    QFile old(path("out.wav"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write(QByteArray(1'000'000, 'x'));
    old.close();
    old.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther | QFile::WriteOther);
    EXPECT_EQ(convert(capture(48'000, 1, 480, tone(500, 48'000, 0.5F))).size(), 160U);
    EXPECT_EQ(QFileInfo(path("out.wav")).permissions() & ~(QFile::ReadUser | QFile::WriteUser),
              QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(WavConverterTest, ALinkInThePlaceOfTheWavIsNotFollowed) {
    QFile victim(path("victim"));
    ASSERT_TRUE(victim.open(QIODevice::WriteOnly));
    victim.write("mine");
    victim.close();
    ASSERT_TRUE(QFile::link(path("victim"), path("out.wav")));
    convert(capture(48'000, 1, 480, tone(500, 48'000, 0.5F)));
    EXPECT_FALSE(QFileInfo(path("out.wav")).isSymLink());
    EXPECT_EQ(QFileInfo(path("victim")).size(), 4);
}

/// The place of the data chunk's length in a capture file: eight bytes, big-endian (Apple, Core Audio Format
/// 1.0).
qsizetype dataLengthOffset(const QByteArray& caf) {
    return caf.indexOf("data") + 4;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void replace(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

TEST_F(WavConverterTest, ARecordingThatAPowerCutLeftIsRefused) {
    const QByteArray whole = contents(capture(48'000, 1, 48'000, tone(1'000, 48'000, 0.5F)));
    QByteArray unfinished = whole;
    unfinished.replace(dataLengthOffset(whole), 8, QByteArray(8, '\xff'));  // -1: not known yet
    for (const QByteArray& bytes : {unfinished, whole.left(whole.size() / 2), whole.left(100)}) {
        replace(path("cut.caf"), bytes);
        EXPECT_EQ(failure(path("cut.caf"), path("out.wav")),
                  QStringLiteral("afconvert fallito: il file audio è danneggiato"));
    }
}

TEST_F(WavConverterTest, AMissingRecordingIsSaidInItalianAndInTheLibrarysWordsToTheLog) {
    try {
        converter.convert(path("missing.caf"), path("out.wav"));
        FAIL() << "there is nothing to convert";
    } catch (const Error& error) {
        EXPECT_EQ(error.localizedDescription(),
                  QStringLiteral("afconvert fallito: la cartella o il file non esiste"));
        EXPECT_TRUE(error.detail().contains(QStringLiteral("No such file"))) << error.detail().toStdString();
    }
}

TEST_F(WavConverterTest, WhatIsNoSoundIsRefused) {
    for (const QByteArray& bytes : {QByteArray(), QByteArray("caff"), QByteArray(5'000, 'x'),
                                    QByteArray("caff\x00\x01\x00\x00", 8) + QByteArray(200, '\xff')}) {
        replace(path("noise.caf"), bytes);
        const QString words = failure(path("noise.caf"), path("out.wav"));
        EXPECT_GT(words.size(), QStringLiteral("afconvert fallito: ").size()) << bytes.left(8).toStdString();
    }
    EXPECT_TRUE(failure(folder.path(), path("out.wav")).startsWith(QStringLiteral("afconvert fallito: ")));
}

TEST_F(WavConverterTest, APlaceThatCannotBeWrittenIsSaid) {
    const QString source = capture(48'000, 1, 480, tone(500, 48'000, 0.5F));
    EXPECT_EQ(failure(source, path("no/such/folder.wav")),
              QStringLiteral("afconvert fallito: la cartella o il file non esiste"));
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("out.wav")));
    EXPECT_TRUE(failure(source, path("out.wav")).startsWith(QStringLiteral("afconvert fallito: ")));
    EXPECT_TRUE(QFileInfo(path("out.wav")).isDir());
}

TEST_F(WavConverterTest, AFullDiskIsSaidAndLeavesNoPartialWav) {
    const QString source = capture(48'000, 1, 480'000, tone(500, 48'000, 0.5F));
    const FileSizeLimit limit(100'000);
    EXPECT_EQ(failure(source, path("out.wav")),
              QStringLiteral("afconvert fallito: file troppo grande per questo disco"));
    EXPECT_FALSE(QFile::exists(path("out.wav")));
}

}  // namespace
}  // namespace parlivo
