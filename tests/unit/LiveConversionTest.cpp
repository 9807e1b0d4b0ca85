// SPDX-License-Identifier: MIT
#include "AudioRecorderFixture.h"
#include "platform/linux/sound/SndfileWavConverter.h"
#include "support/FileSizeLimit.h"

#include <QFileInfo>

#include <gmock/gmock.h>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

/// With a platform that converts while it records.
class LiveConversionTest : public AudioRecorderTest {
  protected:
    LiveConversionTest() { platform.wavConverter().real = &converter; }

    QStringList wavs() {
        return QDir(platform.directories().temporary()).entryList({QStringLiteral("*.wav")}, QDir::Files);
    }
    /// A recording of noise that is no whole number of blocks.
    QString recordNoise() {
        std::vector<float> noise(static_cast<std::size_t>(100'001 * microphone().format.channels));
        unsigned random = 1;
        for (float& sample : noise) {
            random = random * 1'664'525 + 1'013'904'223;
            sample = static_cast<float>(random >> 8) / 16'777'216.0F - 0.5F;
        }
        recorder.start();
        EXPECT_TRUE(microphone().speak(noise));
        now += 2s;
        return recorder.stop().value();
    }
    static QByteArray contents(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    SndfileWavConverter converter;
};

TEST_F(LiveConversionTest, TheWavIsReadyWhenTheRecordingEnds) {
    const QString capture = recordNoise();
    ASSERT_EQ(wavs().size(), 1);
    QFile::remove(capture);  // whoever converted now would find nothing
    const QString wav = AudioRecorder::convertToWhisperWAV(capture);
    EXPECT_EQ(QFileInfo(wav).fileName(), wavs().constFirst());
    EXPECT_EQ(SndfileHandle(wav.toStdString()).frames(), 33'334);
}

TEST_F(LiveConversionTest, TheWavIsTheOneThatAConversionAfterwardsGives) {
    for (const AudioFormat format :
         {AudioFormat{48'000, 1}, AudioFormat{44'100, 2}, AudioFormat{16'000, 6}}) {
        microphone().format = format;
        const QString capture = recordNoise();
        const QString afterwards = platform.directories().temporary() + QStringLiteral("/afterwards.wav");
        converter.convert(capture, afterwards);
        const QByteArray expected = contents(afterwards);
        EXPECT_GT(expected.size(), 44);
        EXPECT_TRUE(contents(AudioRecorder::convertToWhisperWAV(capture)) == expected) << format.sampleRate;
    }
}

TEST_F(LiveConversionTest, OnlyTheUserReadsTheWavWhileItGrows) {
    recorder.start();
    ASSERT_EQ(wavs().size(), 1);
    const QFileInfo wav(QDir(platform.directories().temporary()).filePath(wavs().constFirst()));
    EXPECT_EQ(wav.permissions() & ~(QFile::ReadUser | QFile::WriteUser),
              QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(LiveConversionTest, AShortPressLeavesNoFile) {
    EXPECT_FALSE(record(290ms));
    EXPECT_THAT(files(), testing::IsEmpty());
}

TEST_F(LiveConversionTest, AFailedStartLeavesNoFile) {
    microphone().startError = Error(QStringLiteral("PulseAudio"), 1, QStringLiteral("Access denied"));
    EXPECT_THROW(recorder.start(), Error);
    EXPECT_THAT(files(), testing::IsEmpty());
}

TEST_F(LiveConversionTest, AnUnusedWavIsDeleted) {
    {
        AudioRecorder other([this] { return now; });
        other.start();
        now += 1s;
        EXPECT_TRUE(other.stop());
        EXPECT_EQ(wavs().size(), 1);
    }
    EXPECT_THAT(wavs(), testing::IsEmpty()) << "after the recorder's end";
    recordNoise();
    recordNoise();
    EXPECT_EQ(wavs().size(), 1) << "that of the earlier recording";
}

TEST_F(LiveConversionTest, AWavThatWasAskedForBelongsToTheCaller) {
    QString wav;
    {
        AudioRecorder other([this] { return now; });
        other.start();
        now += 1s;
        wav = AudioRecorder::convertToWhisperWAV(other.stop().value());
    }
    EXPECT_TRUE(QFile::exists(wav));
    EXPECT_TRUE(QFile::remove(wav));
}

TEST_F(LiveConversionTest, AnEarlierRecordingCanStillBeConverted) {
    const QString first = recordNoise();
    recordNoise();
    EXPECT_EQ(SndfileHandle(AudioRecorder::convertToWhisperWAV(first).toStdString()).frames(), 33'334);
}

TEST_F(LiveConversionTest, AnAbandonedRecordingKeepsItsCaptureFileOnly) {
    recorder.start();
    recorder.start();
    EXPECT_EQ(files().size(), 3) << files().join(QLatin1Char(' ')).toStdString();
    EXPECT_EQ(wavs().size(), 1);
}

TEST_F(LiveConversionTest, AFailureWhileRecordingLeavesTheConversionForAfterwards) {
    QString capture;
    {
        const FileSizeLimit limit(20'000);
        capture = recordNoise();
    }
    EXPECT_THAT(wavs(), testing::IsEmpty()) << "a WAV without its end";
    EXPECT_GT(SndfileHandle(AudioRecorder::convertToWhisperWAV(capture).toStdString()).frames(), 1'000);
}

TEST_F(LiveConversionTest, AFullDiskIsSaidByTheConversionAfterwards) {
    QString capture;
    {
        const FileSizeLimit whileRecording(20'000);
        capture = recordNoise();
    }
    const FileSizeLimit afterwards(100);
    try {
        AudioRecorder::convertToWhisperWAV(capture);
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), static_cast<int>(ErrorCode::ConversionFailed));
    }
    EXPECT_THAT(wavs(), testing::IsEmpty());
}

}  // namespace
}  // namespace parlivo
