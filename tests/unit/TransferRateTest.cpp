// SPDX-License-Identifier: MIT
#include "support/Clock.h"
#include "ui/onboarding/TransferRate.h"

#include <gtest/gtest.h>

namespace parlivo {
namespace {

TEST(TransferRateTest, IsBytesPerSecondOfTheLastSeconds) {
    TransferRate rate;
    const Clock::TimePoint start{};
    using std::chrono::seconds;
    rate.start(start);
    EXPECT_FALSE(rate.bytesPerSecond());
    rate.add(100, start + std::chrono::milliseconds(10));
    EXPECT_FALSE(rate.bytesPerSecond()) << "too early to tell";
    for (int second = 1; second <= 10; ++second) rate.add(qint64{1000} * second, start + seconds(second));
    EXPECT_NEAR(rate.bytesPerSecond().value_or(0), 1000, 1);
    for (int second = 11; second <= 20; ++second)
        rate.add(10'000 + qint64{3000} * (second - 10), start + seconds(second));
    EXPECT_NEAR(rate.bytesPerSecond().value_or(0), 3000, 1) << "what was long ago does not count";
}

TEST(TransferRateTest, TenSecondsWithoutAByteAreAStall) {
    TransferRate rate;
    const Clock::TimePoint start{};
    using std::chrono::milliseconds;
    EXPECT_FALSE(rate.isStalled(start)) << "nothing runs";
    rate.start(start);
    EXPECT_FALSE(rate.isStalled(start + milliseconds(9999)));
    EXPECT_TRUE(rate.isStalled(start + milliseconds(10'000))) << "not even the first byte";
    rate.add(5, start + milliseconds(11'000));
    EXPECT_FALSE(rate.isStalled(start + milliseconds(20'999)));
    rate.add(5, start + milliseconds(20'999));
    EXPECT_TRUE(rate.isStalled(start + milliseconds(21'000))) << "the same report again is no byte";
}

}  // namespace
}  // namespace parlivo
