// SPDX-License-Identifier: MIT
#include "audio/LevelMeter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace parlivo {
namespace {

constexpr std::size_t blockFrames = 4096;

TEST(LevelMeterTest, SilenceDrivesToZero) {
    EXPECT_EQ(LevelMeter::target(std::vector<float>(blockFrames), 1), 0.0F);
}

TEST(LevelMeterTest, AnEmptyBlockDrivesToZero) {
    EXPECT_EQ(LevelMeter::target({}, 1), 0.0F);
}

TEST(LevelMeterTest, FullScaleIsClampedToExactlyOne) {
    EXPECT_EQ(LevelMeter::target(std::vector<float>(blockFrames, -1.0F), 1), 1.0F);
}

TEST(LevelMeterTest, TheTargetIsNineTimesTheRootMeanSquare) {
    EXPECT_NEAR(LevelMeter::target(std::vector<float>(blockFrames, 0.05F), 1), 0.45, 1e-6);
    std::vector<float> alternating(blockFrames);
    for (std::size_t i = 0; i < blockFrames; ++i) alternating[i] = i % 2 == 0 ? 0.08F : -0.06F;
    const float rms = std::sqrt((0.08F * 0.08F + 0.06F * 0.06F) / 2);
    EXPECT_NEAR(LevelMeter::target(alternating, 1), 9.0F * rms, 1e-5);
}

TEST(LevelMeterTest, EveryFrameCountsWhateverTheLength) {
    for (const std::size_t frames : {1U, 2U, 15U, 16U, 17U, 31U, 1000U, 4095U}) {
        std::vector<float> last(frames, 0.0F);
        last.back() = 0.1F;
        const float expected = 9.0F * 0.1F / std::sqrt(static_cast<float>(frames));
        EXPECT_NEAR(LevelMeter::target(last, 1), expected, 1e-6) << frames << " frames";
    }
}

TEST(LevelMeterTest, OnlyTheFirstChannelCounts) {
    std::vector<float> stereo(2 * blockFrames, 0.0F);
    for (std::size_t frame = 0; frame < blockFrames; ++frame) stereo[2 * frame + 1] = 1.0F;
    EXPECT_EQ(LevelMeter::target(stereo, 2), 0.0F);
    for (std::size_t frame = 0; frame < blockFrames; ++frame) stereo[2 * frame] = 0.05F;
    EXPECT_NEAR(LevelMeter::target(stereo, 2), 0.45, 1e-6);
}

TEST(LevelMeterTest, BrokenSamplesStillGiveALevelBetweenZeroAndOne) {
    for (const float broken :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        std::vector<float> block(blockFrames, 0.01F);
        block[7] = broken;
        EXPECT_EQ(LevelMeter::target(block, 1), 1.0F) << broken;
    }
}

TEST(LevelMeterTest, TheLevelRisesFast) {
    const float first = LevelMeter::smoothed(0.0F, 1.0F);
    EXPECT_FLOAT_EQ(first, 0.6F);
    EXPECT_FLOAT_EQ(LevelMeter::smoothed(first, 1.0F), 0.84F);
}

TEST(LevelMeterTest, TheLevelFallsSlowly) {
    EXPECT_FLOAT_EQ(LevelMeter::smoothed(1.0F, 0.0F), 0.82F);
    EXPECT_FLOAT_EQ(LevelMeter::smoothed(0.5F, 0.25F), 0.25F * 0.18F + 0.5F * 0.82F);
}

TEST(LevelMeterTest, ASteadyLevelStays) {
    EXPECT_FLOAT_EQ(LevelMeter::smoothed(0.4F, 0.4F), 0.4F);
}

}  // namespace
}  // namespace parlivo
