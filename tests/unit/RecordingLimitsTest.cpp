// SPDX-License-Identifier: MIT
#include "AudioRecorderFixture.h"

#include <QCoreApplication>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

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
