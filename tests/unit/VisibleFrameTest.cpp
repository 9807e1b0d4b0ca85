// SPDX-License-Identifier: MIT
#include "platform/linux/x11/VisibleFrame.h"

#include <gtest/gtest.h>

namespace parlivo {
namespace {

constexpr QSize wholeScreen(3200, 1200);  // two monitors, the right one lower by 120 pixels
constexpr QRect leftMonitor(0, 0, 1920, 1200);
constexpr QRect rightMonitor(1920, 120, 1280, 1024);

TEST(VisibleFrameTest, WithoutDocksIsTheWholeMonitor) {
    EXPECT_EQ(visibleFrame(leftMonitor, wholeScreen, {}), leftMonitor);
    EXPECT_EQ(visibleFrame(rightMonitor, wholeScreen, {}), rightMonitor);
}

TEST(VisibleFrameTest, LosesWhatADockKeepsAtEachEdge) {
    const Strut left{.left = 64, .leftStart = 0, .leftEnd = 1199};
    const Strut top{.top = 30, .topStart = 0, .topEnd = 1919};
    const Strut bottom{.bottom = 48, .bottomStart = 0, .bottomEnd = 1919};
    EXPECT_EQ(visibleFrame(leftMonitor, wholeScreen, {left}), QRect(64, 0, 1856, 1200));
    EXPECT_EQ(visibleFrame(leftMonitor, wholeScreen, {top}), QRect(0, 30, 1920, 1170));
    EXPECT_EQ(visibleFrame(leftMonitor, wholeScreen, {bottom}), QRect(0, 0, 1920, 1152));
    EXPECT_EQ(visibleFrame(leftMonitor, wholeScreen, {left, top, bottom}), QRect(64, 30, 1856, 1122));
    const Strut right{.right = 100, .rightStart = 120, .rightEnd = 1143};
    EXPECT_EQ(visibleFrame(rightMonitor, wholeScreen, {right}), QRect(1920, 120, 1180, 1024));
}

TEST(VisibleFrameTest, ADockOnTheOtherMonitorTakesNothing) {
    const Strut bottom{.bottom = 48, .bottomStart = 0, .bottomEnd = 1919};
    const Strut right{.right = 100, .rightStart = 120, .rightEnd = 1143};
    EXPECT_EQ(visibleFrame(rightMonitor, wholeScreen, {bottom}), rightMonitor);
    EXPECT_EQ(visibleFrame(leftMonitor, wholeScreen, {right}), leftMonitor);
}

TEST(VisibleFrameTest, DistancesCountFromTheEdgesOfTheWholeScreen) {
    // The right monitor ends 56 pixels above the lower edge: a dock of 40 pixels there keeps 96.
    const Strut bottom{.bottom = 96, .bottomStart = 1920, .bottomEnd = 3199};
    EXPECT_EQ(visibleFrame(rightMonitor, wholeScreen, {bottom}), QRect(1920, 120, 1280, 984));
    const Strut inner{.left = 1990, .leftStart = 120, .leftEnd = 1143};
    EXPECT_EQ(visibleFrame(rightMonitor, wholeScreen, {inner}), QRect(1990, 120, 1210, 1024))
        << "a dock between the monitors";
}

TEST(VisibleFrameTest, SeveralDocksAtOneEdgeCountOnce) {
    const Strut narrow{.bottom = 30, .bottomStart = 0, .bottomEnd = 500};
    const Strut high{.bottom = 50, .bottomStart = 600, .bottomEnd = 1919};
    EXPECT_EQ(visibleFrame(leftMonitor, wholeScreen, {narrow, high}), QRect(0, 0, 1920, 1150));
    EXPECT_EQ(visibleFrame(leftMonitor, wholeScreen, {high, narrow}), QRect(0, 0, 1920, 1150));
}

TEST(VisibleFrameTest, ReservedSpaceThatLeavesNoRoomIsIgnored) {
    const Strut everything{.bottom = 1200, .bottomStart = 0, .bottomEnd = 3199};
    EXPECT_EQ(visibleFrame(leftMonitor, wholeScreen, {everything}), leftMonitor);
}

}  // namespace
}  // namespace parlivo
