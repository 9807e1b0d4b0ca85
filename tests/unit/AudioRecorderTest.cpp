// SPDX-License-Identifier: MIT
#include "AudioRecorderFixture.h"
#include "support/Errors.h"
#include "support/FileSizeLimit.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QRegularExpression>

#include <gmock/gmock.h>

namespace parlivo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAreArray;

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

TEST_F(AudioRecorderTest, DestroyingTheRecorderEndsTheCapture) {
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

TEST_F(AudioRecorderTest, AnInterruptionAfterTheRecordersDestructionDoesNothing) {
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

}  // namespace
}  // namespace parlivo
