// SPDX-License-Identifier: MIT
#include "input/Pace.h"

#include <gtest/gtest.h>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

TEST(PaceTest, StepsLieOnAGridWhateverEachStepTakes) {
    const Clock::TimePoint start{};
    Pace pace(10ms, start);
    EXPECT_EQ(pace.after(start), start + 10ms);
    EXPECT_EQ(pace.after(start + 12ms), start + 20ms);
    EXPECT_EQ(pace.after(start + 20ms), start + 30ms);
}

TEST(PaceTest, ALateStepDoesNotDelayTheFollowing) {
    const Clock::TimePoint start{};
    Pace pace(10ms, start);
    for (int i = 1; i < 100; ++i) EXPECT_EQ(pace.after(start + 200ms), start + i * 10ms);
}

TEST(PaceTest, StepsMissedInAPauseAreNotMadeUpFor) {
    const Clock::TimePoint start{};
    Pace pace(10ms, start);
    EXPECT_EQ(pace.after(start + 5s), start + 5s + 10ms);
    EXPECT_EQ(pace.after(start + 5s + 10ms), start + 5s + 20ms);
}

}  // namespace
}  // namespace parlivo
