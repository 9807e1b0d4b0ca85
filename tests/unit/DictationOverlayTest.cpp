// SPDX-License-Identifier: MIT
#include "audio/overlay/DictationOverlay.h"
#include "support/PlatformTest.h"

#include <QTest>

#include <gtest/gtest.h>

namespace parlivo {
namespace {

using DictationOverlayTest = PlatformTest;

TEST_F(DictationOverlayTest, HideWithoutShowDoesNothing) {
    DictationOverlay overlay;
    overlay.hide();
    EXPECT_EQ(platform.floatingPanels().made, 0);
}

TEST_F(DictationOverlayTest, ShowTwiceKeepsThePanelAndStartsAnew) {
    DictationOverlay overlay;
    overlay.setLevelProvider([] { return 1.0F; });
    overlay.show();
    const fake::FloatingPanel& panel = *platform.floatingPanels().panel;
    ASSERT_TRUE(QTest::qWaitFor([&] { return overlay.waveView()->level() > 0.9; }));
    overlay.show();
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.shown, 2);
    EXPECT_EQ(overlay.waveView()->level(), 0);
    overlay.hide();
    EXPECT_FALSE(panel.isVisible());
    overlay.show();
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(platform.floatingPanels().made, 1);
}

TEST_F(DictationOverlayTest, AsksForItsSizeAndPlace) {
    DictationOverlay overlay;
    overlay.show();
    const PanelPlacing& placing = platform.floatingPanels().placing;
    EXPECT_EQ(placing.size, QSize(240, 84));
    EXPECT_EQ(placing.aboveEdge, 110);
    EXPECT_EQ(placing.cornerRadius, 20);
}

TEST_F(DictationOverlayTest, ShowsNothingWhereADesktopHasNoWay) {
    platform.floatingPanels().possible = false;
    DictationOverlay overlay;
    overlay.setLevelProvider([] { return 1.0F; });
    overlay.show();
    overlay.rest();
    overlay.hide();
    EXPECT_EQ(overlay.waveView(), nullptr);
}

TEST_F(DictationOverlayTest, DrawsForThePanelsScaleAndCorners) {
    DictationOverlay overlay;
    overlay.show();
    fake::FloatingPanel& panel = *platform.floatingPanels().panel;
    EXPECT_EQ(panel.last.size(), QSize(240, 84));
    EXPECT_EQ(panel.last.pixelColor(0, 0).alpha(), 0) << "round corners";
    panel.wanted = {.scale = 2, .corners = FloatingPanel::Corners::CutAway};
    overlay.show();
    EXPECT_EQ(panel.last.size(), QSize(480, 168));
    EXPECT_EQ(panel.last.pixelColor(0, 0).alpha(), 255);
}

TEST_F(DictationOverlayTest, AClearedProviderMeansSilenceUntilTheNextShowing) {
    DictationOverlay overlay;
    int asked = 0;
    overlay.setLevelProvider([&] {
        ++asked;
        return 0.5F;
    });
    overlay.show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return overlay.waveView()->level() > 0.4; }));
    overlay.rest();
    const int askedBefore = asked;
    ASSERT_TRUE(QTest::qWaitFor([&] { return overlay.waveView()->level() < 0.1; }));
    EXPECT_EQ(asked, askedBefore);
    overlay.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return overlay.waveView()->level() > 0.4; }));
}

TEST_F(DictationOverlayTest, AtRestTheRibbonIsALineOnACardThatBreathes) {
    DictationOverlay overlay;
    overlay.setLevelProvider([] { return 0.0F; });
    overlay.show();
    const fake::FloatingPanel& panel = *platform.floatingPanels().panel;
    const auto inkedRows = [&] {
        int rows = 0;
        for (int y = 10; y < 74; ++y) {
            bool inked = false;
            for (int x = 30; x < 210; ++x)
                inked = inked || panel.last.pixelColor(x, y).lightness() + 25 <
                                     panel.last.pixelColor(6, y).lightness();
            rows += inked ? 1 : 0;
        }
        return rows;
    };
    EXPECT_EQ(overlay.waveView()->restShare(), 0);
    EXPECT_GT(inkedRows(), 10) << "the silent ribbon has its shape";
    const int silent = panel.last.pixelColor(120, 8).lightness();
    overlay.rest();
    ASSERT_TRUE(QTest::qWaitFor([&] { return overlay.waveView()->restShare() == 1 && inkedRows() <= 3; }));
    EXPECT_LT(panel.last.pixelColor(120, 8).lightness(), silent) << "the card is dimmer";
    const QColor before = panel.last.pixelColor(120, 8);
    EXPECT_TRUE(QTest::qWaitFor([&] { return panel.last.pixelColor(120, 8) != before; })) << "it breathes";
    EXPECT_EQ(panel.last.pixelColor(0, 0).alpha(), 0) << "only the card";
    overlay.show();
    EXPECT_EQ(overlay.waveView()->restShare(), 0);
    EXPECT_GT(inkedRows(), 10);
}

TEST_F(DictationOverlayTest, DrawsNothingWhileHidden) {
    DictationOverlay overlay;
    int frames = 0;
    overlay.setLevelProvider([&] {
        ++frames;
        return 0.0F;
    });
    overlay.show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return frames >= 10; }));
    overlay.hide();
    EXPECT_FALSE(overlay.waveView()->isRunning());
    const int shown = frames;
    QTest::qWait(200);
    EXPECT_EQ(frames, shown);
}

TEST_F(DictationOverlayTest, ShowsSixtyFramesASecond) {
    DictationOverlay overlay;
    int frames = 0;
    overlay.setLevelProvider([&] {
        ++frames;
        return 0.0F;
    });
    overlay.show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return frames > 0; }));
    QElapsedTimer clock;
    clock.start();
    frames = 0;
    ASSERT_TRUE(QTest::qWaitFor([&] { return frames >= 30; }));
    // A busy machine may be slower; faster it must never be.
    EXPECT_GE(clock.elapsed(), 30 * 1000 / 60 - 20);
}

}  // namespace
}  // namespace parlivo
