// SPDX-License-Identifier: MIT
#include "platform/qt/QtFloatingPanel.h"

#include <gtest/gtest.h>

#include <cmath>

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

    /// What the window shows, its transparent pixels too.
    QImage seen() const {
        QImage picture(window.size(), QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        const_cast<QWidget&>(window).render(&picture);
        return picture;
    }
};

TEST_F(QtFloatingPanelTest, FloatsAboveTheVisibleFramesLowerEdge) {
    panel.show();
    EXPECT_EQ(panel.geometry(), QRect(520, 800 - 110 - 84, 240, 84));
    EXPECT_EQ(window.geometry(), panel.geometry().adjusted(-24, -24, 24, 24)) << "room for the shadow";
    screens.visibleFrame = QRect(0, 30, 1280, 800 - 30 - 25);
    panel.show();
    EXPECT_EQ(panel.geometry().bottom() + 1, 800 - 135) << "a dock of 25 at the bottom";
    screens.visibleFrame = QRect(1920, -200, 1001, 700);
    panel.show();
    EXPECT_EQ(panel.geometry().topLeft(), QPoint(1920 + (1001 - 240) / 2, 500 - 110 - 84));
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
    EXPECT_EQ(panel.geometry().size(), QSize(240, 84));
    EXPECT_EQ(window.size(), QSize(240, 84)) << "no room for a shadow";
    EXPECT_TRUE(shape.contains(QPoint(120, 0)));
    EXPECT_TRUE(shape.contains(QPoint(0, 42)));
    EXPECT_FALSE(shape.contains(QPoint(2, 2)));
    EXPECT_FALSE(shape.contains(QPoint(239, 83)));
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
        EXPECT_EQ(seen().pixelColor(24 + 120, 24 + 42), colour);
    }
}

TEST_F(QtFloatingPanelTest, HasAShadowThatFadesOutwards) {
    panel.show();
    QImage frame(240, 84, QImage::Format_ARGB32_Premultiplied);
    frame.fill(QColor(239, 234, 223));
    panel.present(frame);
    const QImage picture = seen();
    const auto shadow = [&](int x, int y) { return picture.pixelColor(x, y).alpha(); };
    EXPECT_EQ(shadow(0, 0), 0) << "nothing at the window's corner";
    for (int out = 2; out < 24; ++out)
        EXPECT_LE(shadow(144, 24 + 84 + out), shadow(144, 24 + 84 + out - 1)) << out << " below the panel";
    EXPECT_GT(shadow(144, 24 + 84 + 6), shadow(144, 24 - 1 - 6)) << "it lies below rather than above";
    EXPECT_EQ(shadow(144, 24 + 84 + 23), 0) << "and is not cut off";
}

/// Relative luminance of a grey (WCAG 2.1).
double luminance(const QColor& grey) {
    const double value = grey.redF();
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// Without a shadow the edge lies on the panel itself, which keeps its size.
TEST_F(QtFloatingPanelTest, StandsOutFromAWhitePageWhereNothingIsTransparent) {
    screens.transparency = false;
    panel.show();
    QImage frame(240, 84, QImage::Format_ARGB32_Premultiplied);
    frame.fill(QColor(239, 239, 239));
    panel.present(frame);
    const QImage picture = seen();
    const double card = luminance(picture.pixelColor(120, 42));
    for (const QPoint edge : {QPoint(120, 0), QPoint(120, 83), QPoint(0, 42), QPoint(239, 42)}) {
        const double dark = luminance(picture.pixelColor(edge));
        EXPECT_GE((card + 0.05) / (dark + 0.05), 1.5) << edge.x() << " " << edge.y();
        EXPECT_GE(1.05 / (dark + 0.05), 1.5) << edge.x() << " " << edge.y();
    }
}

/// A bright panel on a bright page.
TEST_F(QtFloatingPanelTest, StandsOutFromAWhitePage) {
    panel.show();
    const QImage picture = seen();
    for (const QPoint edge :
         {QPoint(144, 23), QPoint(144, 24 + 84), QPoint(23, 24 + 42), QPoint(24 + 240, 24 + 42)}) {
        QColor page(Qt::white);
        const auto share = picture.pixelColor(edge).alphaF();
        page.setRedF(1 - share);
        constexpr double card = 0.83;  // the luminance of (239, 234, 223)
        EXPECT_GE((card + 0.05) / (luminance(page) + 0.05), 1.5) << edge.x() << " " << edge.y();
        EXPECT_GE(1.05 / (luminance(page) + 0.05), 1.5) << edge.x() << " " << edge.y();
    }
}

TEST_F(QtFloatingPanelTest, LeavesTheShadowToASystemThatHasItsOwn) {
    QtFloatingPanel plain{{.size = {240, 84}, .aboveEdge = 110, .cornerRadius = 20},
                          screens,
                          QtFloatingPanel::Shadow::BySystem};
    plain.show();
    EXPECT_EQ(plain.window().geometry(), QRect(520, 800 - 110 - 84, 240, 84));
}

}  // namespace
}  // namespace parlivo
