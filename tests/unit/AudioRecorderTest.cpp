// SPDX-License-Identifier: MIT
#include "audio/AudioRecorder.h"
#include "platform/linux/sound/SndfileWavConverter.h"
#include "support/Errors.h"
#include "support/FileSizeLimit.h"
#include "support/PlatformTest.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QRegularExpression>

#include <gmock/gmock.h>
#include <sndfile.hh>

namespace parlivo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAreArray;

class AudioRecorderTest : public PlatformTest {
  protected:
    AudioRecorderTest() : recorder([this] { return now; }) {}

    fake::AudioInput& microphone() { return platform.audioInput(); }
    bool speakBlocks(int blocks, float sample) {
        const auto samples =
            AudioCapture::blockFrames * static_cast<std::size_t>(blocks * microphone().format.channels);
        return microphone().speak(std::vector<float>(samples, sample));
    }
    QStringList files() { return QDir(platform.directories().temporary()).entryList(QDir::Files); }

    /// Holds the key for that long, without a sound.
    std::optional<QString> record(Clock::Duration length) {
        recorder.start();
        now += length;
        return recorder.stop();
    }

    static std::vector<float> samplesIn(const QString& path) {
        SndfileHandle file(path.toStdString());
        std::vector<float> samples(static_cast<std::size_t>(file.frames() * file.channels()));
        file.readf(samples.data(), file.frames());
        return samples;
    }

    Clock::TimePoint now = Clock::now();
    AudioRecorder recorder;
};

TEST_F(AudioRecorderTest, TheFileIsNamedAfterAFreshUuid) {
    recorder.start();
    const QString first = recorder.currentURL().value();
    recorder.start();
    const QString second = recorder.currentURL().value();
    static const QRegularExpression name(
        QStringLiteral("^parlivo-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.caf$"));
    for (const QString& path : {first, second}) {
        EXPECT_TRUE(name.match(QFileInfo(path).fileName()).hasMatch()) << path.toStdString();
        EXPECT_EQ(QFileInfo(path).path(), platform.directories().temporary());
    }
    EXPECT_NE(first, second);
}

TEST_F(AudioRecorderTest, OnlyTheUserReadsTheFile) {
    recorder.start();
    const auto permissions = QFileInfo(recorder.currentURL().value()).permissions();
    EXPECT_EQ(permissions & ~(QFile::ReadUser | QFile::WriteUser), QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(AudioRecorderTest, TheFileHoldsTheSamplesUnchangedInTheSourcesFormat) {
    microphone().format = {44'100, 2};
    std::vector<float> spoken(2 * (AudioCapture::blockFrames + 100));
    for (std::size_t i = 0; i < spoken.size(); ++i) spoken[i] = static_cast<float>(i) / 1e4F - 0.3F;
    spoken[5] = 1.75F;  // beyond full scale
    recorder.start();
    ASSERT_TRUE(microphone().speak(spoken));
    now += 1s;
    const auto path = recorder.stop();
    ASSERT_TRUE(path);
    SndfileHandle file(path->toStdString());
    EXPECT_EQ(file.format(), SF_FORMAT_CAF | SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE);
    EXPECT_EQ(file.samplerate(), 44'100);
    EXPECT_EQ(file.channels(), 2);
    EXPECT_THAT(samplesIn(*path), ElementsAreArray(spoken));
}

TEST_F(AudioRecorderTest, WhatWasSpokenBeforeTheKeyCameUpIsInTheFile) {
    microphone().tail = std::vector<float>(480, 0.5F);
    const auto path = record(1s);
    ASSERT_TRUE(path);
    EXPECT_EQ(microphone().stoppedAt, now);
    EXPECT_THAT(samplesIn(*path), ElementsAreArray(microphone().tail));
}

TEST_F(AudioRecorderTest, ThreeTenthsOfASecondAreKept) {
    const auto path = record(300ms);
    ASSERT_TRUE(path);
    EXPECT_TRUE(QFile::exists(*path));
    EXPECT_EQ(path, recorder.currentURL());
}

TEST_F(AudioRecorderTest, AShorterPressLeavesNoFile) {
    for (const Clock::Duration length : {Clock::Duration(290ms), Clock::Duration(300ms) - 1ns}) {
        EXPECT_FALSE(record(length)) << length.count() << " ns";
        EXPECT_THAT(files(), testing::IsEmpty());
    }
}

TEST_F(AudioRecorderTest, StoppingWithoutARecordingReturnsNothing) {
    EXPECT_FALSE(recorder.stop());
}

TEST_F(AudioRecorderTest, StoppingTwiceDeletesTheEarlierFile) {
    const auto path = record(1s);
    ASSERT_TRUE(path && QFile::exists(*path));
    EXPECT_FALSE(recorder.stop());
    EXPECT_FALSE(QFile::exists(*path));
    EXPECT_EQ(recorder.currentURL(), path);
}

TEST_F(AudioRecorderTest, StartingAgainAbandonsTheRecordingButNotItsFile) {
    recorder.start();
    const QString first = recorder.currentURL().value();
    recorder.start();
    EXPECT_EQ(microphone().running, 1);
    EXPECT_TRUE(QFile::exists(first));
    EXPECT_NE(recorder.currentURL(), first);
}

TEST_F(AudioRecorderTest, ARestartCountsFromTheSecondStart) {
    recorder.start();
    now += 10s;
    recorder.start();
    now += 200ms;
    EXPECT_FALSE(recorder.stop());
}

TEST_F(AudioRecorderTest, TheLevelFollowsTheSound) {
    recorder.start();
    EXPECT_EQ(recorder.level(), 0.0F);
    speakBlocks(1, 0.5F);
    EXPECT_FLOAT_EQ(recorder.level(), 0.6F);
    speakBlocks(1, 0.5F);
    EXPECT_FLOAT_EQ(recorder.level(), 0.84F);
    speakBlocks(1, 0.0F);
    EXPECT_FLOAT_EQ(recorder.level(), 0.84F * 0.82F);
}

TEST_F(AudioRecorderTest, TheLevelDropsToZeroAtTheEnd) {
    recorder.start();
    speakBlocks(3, 0.5F);
    now += 1s;
    recorder.stop();
    EXPECT_EQ(recorder.level(), 0.0F);
    recorder.start();
    EXPECT_EQ(recorder.level(), 0.0F) << "the level of the recording before";
}

TEST_F(AudioRecorderTest, NoMicrophoneIsSaid) {
    microphone().present = false;
    try {
        recorder.start();
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_TRUE(isError(error, ErrorCode::MicrophoneUnavailable));
        EXPECT_EQ(error.domain(), QStringLiteral("Parlivo"));
        EXPECT_EQ(error.code(), 1);
        EXPECT_EQ(error.localizedDescription(), QStringLiteral("Microfono non disponibile"));
    }
    EXPECT_FALSE(recorder.currentURL());
    EXPECT_THAT(files(), testing::IsEmpty());
}

TEST_F(AudioRecorderTest, ASourceWithoutRateOrChannelsIsNoMicrophone) {
    for (const AudioFormat format : {AudioFormat{0, 1}, AudioFormat{-1, 1}, AudioFormat{48'000, 0}}) {
        microphone().format = format;
        EXPECT_THROW(recorder.start(), Error)
            << format.sampleRate << " Hz, " << format.channels << " channels";
        EXPECT_EQ(microphone().running, 0);
        EXPECT_THAT(files(), testing::IsEmpty());
    }
}

TEST_F(AudioRecorderTest, AFailedStartPassesTheSystemsErrorUpAndLeavesNothingBehind) {
    const auto kept = record(1s);
    microphone().startError = Error(QStringLiteral("PulseAudio"), 1, QStringLiteral("Access denied"));
    try {
        recorder.start();
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.domain(), QStringLiteral("PulseAudio"));
        EXPECT_EQ(error.localizedDescription(), QStringLiteral("Access denied"));
    }
    EXPECT_EQ(recorder.currentURL(), kept) << "changes only when a start succeeds";
    EXPECT_EQ(files(), QStringList(QFileInfo(*kept).fileName()));
    EXPECT_EQ(microphone().running, 0);
    EXPECT_EQ(recorder.level(), 0.0F);
}

TEST_F(AudioRecorderTest, ARecordingGoesOnAfterAFailedStart) {
    microphone().startError = Error(QStringLiteral("PulseAudio"), 1, QStringLiteral("Access denied"));
    EXPECT_THROW(recorder.start(), Error);
    microphone().startError.reset();
    EXPECT_TRUE(record(1s));
}

TEST_F(AudioRecorderTest, AFileThatCannotBeCreatedPassesTheSystemsErrorUp) {
    platform.directories().temporaryDir.remove();
    try {
        recorder.start();
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.domain(), QStringLiteral("POSIX"));
        EXPECT_EQ(error.code(), ENOENT);
    }
    EXPECT_EQ(microphone().running, 0);
    EXPECT_FALSE(recorder.currentURL());
}

TEST_F(AudioRecorderTest, AFullDiskDoesNotStopTheCapture) {
    const FileSizeLimit limit(100'000);
    recorder.start();
    for (int block = 0; block < 20; ++block) ASSERT_TRUE(speakBlocks(1, 0.5F));
    EXPECT_GT(recorder.level(), 0.99F);
    now += 1s;
    const auto path = recorder.stop();
    ASSERT_TRUE(path);
    const auto kept = samplesIn(*path);
    EXPECT_GT(kept.size(), AudioCapture::blockFrames);
    EXPECT_LT(kept.size(), 20 * AudioCapture::blockFrames);
    EXPECT_THAT(kept, testing::Each(0.5F));
}

TEST_F(AudioRecorderTest, TheRecordersDeathEndsTheCapture) {
    {
        AudioRecorder other;
        other.start();
        EXPECT_EQ(microphone().running, 1);
    }
    EXPECT_EQ(microphone().running, 0);
}

TEST_F(AudioRecorderTest, AnInterruptionIsReportedOnceOnTheMainThreadAndTheFileIsKept) {
    int reports = 0;
    recorder.onInterrupted = [&] { ++reports; };
    recorder.start();
    speakBlocks(2, 0.25F);
    now += 1s;
    ASSERT_TRUE(microphone().interrupt());
    EXPECT_EQ(reports, 0) << "reported on the caller's thread";
    QCoreApplication::processEvents();
    EXPECT_EQ(reports, 1);
    const auto path = recorder.stop();
    ASSERT_TRUE(path);
    EXPECT_EQ(samplesIn(*path).size(), 2 * AudioCapture::blockFrames);
}

TEST_F(AudioRecorderTest, AnInterruptionOfAnEndedRecordingDoesNotReachTheNext) {
    int reports = 0;
    recorder.onInterrupted = [&] { ++reports; };
    recorder.start();
    ASSERT_TRUE(microphone().interrupt());
    recorder.stop();
    recorder.start();
    QCoreApplication::processEvents();
    EXPECT_EQ(reports, 0);
}

TEST_F(AudioRecorderTest, AnInterruptionAfterTheRecordersDeathDoesNothing) {
    int reports = 0;
    {
        AudioRecorder other;
        other.onInterrupted = [&] { ++reports; };
        other.start();
        ASSERT_TRUE(microphone().interrupt());
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(reports, 0);
}

TEST_F(AudioRecorderTest, TheWavLiesBesideTheCaptureFile) {
    const QString folder = platform.directories().temporary();
    const QString source = folder + QStringLiteral("/parlivo-A.B.caf");
    EXPECT_EQ(AudioRecorder::convertToWhisperWAV(source), folder + QStringLiteral("/parlivo-A.B.wav"));
    EXPECT_EQ(platform.wavConverter().converted, QStringList(source));
}

TEST_F(AudioRecorderTest, AFailedConversionPassesUp) {
    platform.wavConverter().error =
        Error(ErrorCode::ConversionFailed, QStringLiteral("afconvert fallito: no such format"));
    try {
        AudioRecorder::convertToWhisperWAV(QStringLiteral("x.caf"));
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_TRUE(isError(error, ErrorCode::ConversionFailed));
        EXPECT_EQ(error.localizedDescription(), QStringLiteral("afconvert fallito: no such format"));
    }
}

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

TEST_F(LiveConversionTest, AWavThatNobodyAsksForIsDeleted) {
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

TEST_F(LiveConversionTest, AWavThatWasAskedForIsTheCallers) {
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

/// How often a recording with these limits asks to be ended, when so many blocks are spoken.
class RecordingLimitsTest : public AudioRecorderTest {
  protected:
    int reportsAfter(const RecordingLimits& limits, int blocks) {
        AudioRecorder limited([this] { return now; }, limits);
        int reports = 0;
        limited.onInterrupted = [&] { ++reports; };
        limited.start();
        for (int block = 0; block < blocks; ++block) EXPECT_TRUE(speakBlocks(1, 0.5F));
        QCoreApplication::processEvents();
        now += 1s;
        EXPECT_TRUE(limited.stop()) << "what was recorded is there";
        return reports;
    }
    static constexpr std::uintmax_t blockBytes = AudioCapture::blockFrames * sizeof(float);
    static constexpr std::uintmax_t plenty = 1'000'000'000'000;
};

TEST_F(RecordingLimitsTest, AreTwoGigabytesAndTwoHundredMegabytes) {
    EXPECT_EQ(RecordingLimits().largestFile, 2'000'000'000U);
    EXPECT_EQ(RecordingLimits().leastFreeSpace, 200'000'000U);
}

TEST_F(RecordingLimitsTest, ARecordingEndsOnceAtItsLargestSize) {
    EXPECT_EQ(reportsAfter({.largestFile = 10 * blockBytes, .leastFreeSpace = 0}, 9), 0);
    EXPECT_EQ(reportsAfter({.largestFile = 10 * blockBytes, .leastFreeSpace = 0}, 10), 1);
    EXPECT_EQ(reportsAfter({.largestFile = 10 * blockBytes, .leastFreeSpace = 0}, 25), 1);
}

TEST_F(RecordingLimitsTest, EveryChannelCounts) {
    microphone().format = {48'000, 2};
    EXPECT_EQ(reportsAfter({.largestFile = 10 * blockBytes, .leastFreeSpace = 0}, 4), 0);
    EXPECT_EQ(reportsAfter({.largestFile = 10 * blockBytes, .leastFreeSpace = 0}, 5), 1);
}

TEST_F(RecordingLimitsTest, ARecordingEndsOnceOnAFullDiskButNotBeforeTheFirstLook) {
    const RecordingLimits full{
        .largestFile = plenty, .leastFreeSpace = UINTMAX_MAX, .secondsBetweenChecks = 2};
    // Two seconds are 23.4 blocks.
    EXPECT_EQ(reportsAfter(full, 23), 0);
    EXPECT_EQ(reportsAfter(full, 24), 1);
    EXPECT_EQ(reportsAfter(full, 100), 1);
}

TEST_F(RecordingLimitsTest, ARecordingGoesOnWhereThereIsRoom) {
    EXPECT_EQ(reportsAfter({.largestFile = plenty, .leastFreeSpace = 1, .secondsBetweenChecks = 1}, 100), 0);
}

}  // namespace
}  // namespace parlivo
