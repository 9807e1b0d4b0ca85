// SPDX-License-Identifier: MIT
#include "platform/linux/portal/ReleaseRule.h"

#include <gtest/gtest.h>

namespace parlivo::portal {
namespace {

using namespace std::chrono_literals;
using Edges = ReleaseRule::Edges;

class ReleaseRuleTest : public testing::Test {
  protected:
    static Clock::TimePoint at(std::chrono::milliseconds time) { return Clock::TimePoint(1h) + time; }
    ReleaseRule rule;
};

TEST_F(ReleaseRuleTest, APressIsToldOnceHoweverOftenItIsRepeated) {
    EXPECT_EQ(rule.activated(at(0ms)), Edges::Press);
    for (auto time = 500ms; time < 2000ms; time += 30ms) EXPECT_EQ(rule.activated(at(time)), Edges::None);
    EXPECT_TRUE(rule.isHeld());
    EXPECT_TRUE(rule.end());
    EXPECT_FALSE(rule.end()) << "a second word of the same";
    EXPECT_FALSE(rule.isHeld());
    EXPECT_EQ(rule.deadline(), std::nullopt);
}

TEST_F(ReleaseRuleTest, WithoutARepeatItEndsShortlyAfterOneShouldHaveCome) {
    rule.activated(at(0ms));
    EXPECT_EQ(rule.deadline(), at(700ms));
}

TEST_F(ReleaseRuleTest, AfterARepeatSilenceEndsIt) {
    rule.activated(at(0ms));
    rule.activated(at(500ms));
    EXPECT_EQ(rule.deadline(), at(650ms));
    rule.activated(at(530ms));
    EXPECT_EQ(rule.deadline(), at(680ms));
}

TEST_F(ReleaseRuleTest, SlowRepeatsAreWaitedForLonger) {
    rule.setRepeat({.isOn = true, .delay = 1000ms, .interval = 100ms});
    rule.activated(at(0ms));
    EXPECT_EQ(rule.deadline(), at(1200ms));
    rule.activated(at(1000ms));
    EXPECT_EQ(rule.deadline(), at(1500ms));
}

TEST_F(ReleaseRuleTest, WithoutRepeatsOnlyTheNextPressShowsThatAReleaseWasLost) {
    rule.setRepeat({.isOn = false, .delay = 500ms, .interval = 30ms});
    EXPECT_EQ(rule.activated(at(0ms)), Edges::Press);
    EXPECT_EQ(rule.deadline(), std::nullopt) << "a long hold is no silence";
    EXPECT_EQ(rule.activated(at(60s)), Edges::ReleaseAndPress);
    EXPECT_TRUE(rule.end());
}

TEST_F(ReleaseRuleTest, AfterTheEndTheNextPressCounts) {
    rule.activated(at(0ms));
    rule.end();
    EXPECT_EQ(rule.activated(at(100ms)), Edges::Press);
    EXPECT_EQ(rule.deadline(), at(800ms));
}

TEST_F(ReleaseRuleTest, WithoutAPressThereIsNoEnd) {
    EXPECT_FALSE(rule.end());
    EXPECT_EQ(rule.deadline(), std::nullopt);
}

}  // namespace
}  // namespace parlivo::portal
