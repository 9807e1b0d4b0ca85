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
    EXPECT_EQ(overlay.panel(), nullptr);
}

TEST_F(DictationOverlayTest, ShowTwiceKeepsThePanelAndStartsAnew) {
    DictationOverlay overlay;
    overlay.setLevelProvider([] { return 1.0F; });
    overlay.show();
    const QWidget* panel = overlay.panel();
    ASSERT_TRUE(QTest::qWaitFor([&] { return overlay.waveView()->level() > 0.9; }));
    overlay.show();
    EXPECT_EQ(overlay.panel(), panel);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(overlay.waveView()->level(), 0);
    overlay.hide();
    EXPECT_FALSE(panel->isVisible());
    overlay.show();
    EXPECT_EQ(overlay.panel(), panel);
}

TEST_F(DictationOverlayTest, FloatsAboveTheVisibleFramesLowerEdge) {
    DictationOverlay overlay;
    overlay.show();
    EXPECT_EQ(overlay.panel()->geometry(), QRect(520, 800 - 110 - 84, 240, 84));
    platform.screens().visibleFrame = QRect(0, 30, 1280, 800 - 30 - 25);
    overlay.show();
    EXPECT_EQ(overlay.panel()->geometry().bottom() + 1, 800 - 135) << "a dock of 25 at the bottom";
    platform.screens().visibleFrame = QRect(1920, -200, 1001, 700);
    overlay.show();
    EXPECT_EQ(overlay.panel()->pos(), QPoint(1920 + (1001 - 240) / 2, 500 - 110 - 84));
}

TEST_F(DictationOverlayTest, KeepsItsPlaceWhenThereIsNoScreen) {
    DictationOverlay overlay;
    overlay.show();
    const QPoint before = overlay.panel()->pos();
    platform.screens().visibleFrame.reset();
    overlay.hide();
    overlay.show();
    EXPECT_EQ(overlay.panel()->pos(), before);
}

TEST_F(DictationOverlayTest, NeverTakesFocusOrClicks) {
    DictationOverlay overlay;
    overlay.show();
    const Qt::WindowFlags flags = overlay.panel()->windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::WindowDoesNotAcceptFocus));
    EXPECT_TRUE(flags.testFlag(Qt::WindowTransparentForInput));
    EXPECT_TRUE(flags.testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(flags.testFlag(Qt::BypassWindowManagerHint)) << "over full-screen windows, on every desktop";
    EXPECT_TRUE(overlay.panel()->testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_FALSE(overlay.panel()->isActiveWindow());
}

TEST_F(DictationOverlayTest, IsCutRoundWhereNothingIsTransparent) {
    DictationOverlay overlay;
    overlay.show();
    EXPECT_TRUE(overlay.panel()->mask().isEmpty());
    platform.screens().transparency = false;
    overlay.show();
    const QRegion shape = overlay.panel()->mask();
    EXPECT_TRUE(shape.contains(QPoint(120, 0)));
    EXPECT_TRUE(shape.contains(QPoint(0, 42)));
    EXPECT_FALSE(shape.contains(QPoint(2, 2)));
    EXPECT_FALSE(shape.contains(QPoint(237, 81)));
    platform.screens().transparency = true;
    overlay.show();
    EXPECT_TRUE(overlay.panel()->mask().isEmpty());
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
    overlay.clearWaveLevelProvider();
    const int askedBefore = asked;
    ASSERT_TRUE(QTest::qWaitFor([&] { return overlay.waveView()->level() < 0.1; }));
    EXPECT_EQ(asked, askedBefore);
    overlay.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return overlay.waveView()->level() > 0.4; }));
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
