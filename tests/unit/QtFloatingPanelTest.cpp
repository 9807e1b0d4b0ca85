// SPDX-License-Identifier: MIT
#include "platform/qt/QtFloatingPanel.h"

#include <QPainter>

#include <gtest/gtest.h>

namespace parlivo {
namespace {

class FakeScreens : public Screens {
  public:
    std::optional<QRect> mainVisibleFrame() override { return visibleFrame; }
    bool transparencyAvailable() override { return transparency; }

    std::optional<QRect> visibleFrame = QRect(0, 0, 1280, 800);
    bool transparency = true;
};

class QtFloatingPanelTest : public testing::Test {
  protected:
    FakeScreens screens;
    QtFloatingPanel panel{{.size = {240, 84}, .aboveEdge = 110, .cornerRadius = 20}, screens};
    const QWidget& window = panel.window();
};

TEST_F(QtFloatingPanelTest, FloatsAboveTheVisibleFramesLowerEdge) {
    panel.show();
    EXPECT_EQ(window.geometry(), QRect(520, 800 - 110 - 84, 240, 84));
    screens.visibleFrame = QRect(0, 30, 1280, 800 - 30 - 25);
    panel.show();
    EXPECT_EQ(window.geometry().bottom() + 1, 800 - 135) << "a dock of 25 at the bottom";
    screens.visibleFrame = QRect(1920, -200, 1001, 700);
    panel.show();
    EXPECT_EQ(window.pos(), QPoint(1920 + (1001 - 240) / 2, 500 - 110 - 84));
}

TEST_F(QtFloatingPanelTest, KeepsItsPlaceWhenThereIsNoScreen) {
    panel.show();
    const QPoint before = window.pos();
    screens.visibleFrame.reset();
    panel.hide();
    EXPECT_FALSE(panel.isVisible());
    panel.show();
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(window.pos(), before);
}

TEST_F(QtFloatingPanelTest, NeverTakesFocusOrClicks) {
    panel.show();
    const Qt::WindowFlags flags = window.windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::WindowDoesNotAcceptFocus));
    EXPECT_TRUE(flags.testFlag(Qt::WindowTransparentForInput));
    EXPECT_TRUE(flags.testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(flags.testFlag(Qt::BypassWindowManagerHint)) << "over full-screen windows, on every desktop";
    EXPECT_TRUE(window.testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_FALSE(window.isActiveWindow());
}

TEST_F(QtFloatingPanelTest, IsCutRoundWhereNothingIsTransparent) {
    panel.show();
    EXPECT_EQ(panel.canvas().corners, FloatingPanel::Corners::Transparent);
    EXPECT_TRUE(window.mask().isEmpty());
    screens.transparency = false;
    panel.show();
    EXPECT_EQ(panel.canvas().corners, FloatingPanel::Corners::CutAway);
    const QRegion shape = window.mask();
    EXPECT_TRUE(shape.contains(QPoint(120, 0)));
    EXPECT_TRUE(shape.contains(QPoint(0, 42)));
    EXPECT_FALSE(shape.contains(QPoint(2, 2)));
    EXPECT_FALSE(shape.contains(QPoint(237, 81)));
    screens.transparency = true;
    panel.show();
    EXPECT_TRUE(window.mask().isEmpty());
}

TEST_F(QtFloatingPanelTest, ShowsTheLastFrameWhateverBecomesOfTheCallersPicture) {
    panel.show();
    QImage frame(240, 84, QImage::Format_ARGB32_Premultiplied);
    for (const QColor colour : {QColor(10, 20, 30), QColor(200, 100, 50)}) {
        frame.fill(colour);
        panel.present(frame);
        frame.fill(Qt::black);
        QImage seen(240, 84, QImage::Format_ARGB32_Premultiplied);
        panel.window();
        const_cast<QWidget&>(window).render(&seen);
        EXPECT_EQ(seen.pixelColor(120, 42), colour);
    }
}

}  // namespace
}  // namespace parlivo
