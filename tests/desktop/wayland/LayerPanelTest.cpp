// SPDX-License-Identifier: MIT
#include "desktop/wayland/Hands.h"
#include "desktop/wayland/Sway.h"
#include "desktop/wayland/WaylandReceiver.h"
#include "platform/linux/wayland/LayerPanels.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace parlivo::desktop {
namespace {

constexpr QSize size(240, 84);
constexpr int aboveEdge = 110;
const QColor colour(12, 200, 34);

/// A panel on the test's screen of 1280 by 800 pixels.
class LayerPanelTest : public testing::Test {
  protected:
    LayerPanelTest() : panel(panels.makePanel({.size = size, .aboveEdge = aboveEdge, .cornerRadius = 0})) {}
    void SetUp() override { ASSERT_TRUE(panel); }

    /// Draws frames for the scale that the panel tells, as an animation does.
    void draw() {
        const double scale = panel->canvas().scale;
        QImage frame(size * scale, QImage::Format_ARGB32_Premultiplied);
        frame.fill(colour);
        panel->present(frame);
    }
    bool waitForPicture(const QRect& place) {
        return waitFor([&] {
            draw();
            return pictureAt(sway::screenshot()) == place;
        });
    }
    bool waitForNoPicture() {
        return waitFor([] { return pictureAt(sway::screenshot()).isNull(); });
    }
    /// Where the picture is in a screenshot, in its pixels.
    static QRect pictureAt(const QImage& screen) {
        QRect place;
        for (int y = 0; y < screen.height(); ++y)
            for (int x = 0; x < screen.width(); ++x)
                if (screen.pixelColor(x, y) == colour) place |= QRect(x, y, 1, 1);
        return place;
    }

    Hands hands;
    wayland::LayerPanels panels;
    std::unique_ptr<FloatingPanel> panel;
};

const QRect usualPlace(QPoint((1280 - 240) / 2, 800 - aboveEdge - 84), size);

TEST_F(LayerPanelTest, FloatsAtItsPlaceWithoutTheFocus) {
    const WaylandReceiver receiver(WaylandReceiver::Kind::Gtk3);
    panel->show();
    EXPECT_TRUE(waitForPicture(usualPlace));
    EXPECT_EQ(sway::focusedTitle(), receiver.title());
    hands.tap(KEY_A);
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("a")));
    panel->hide();
    EXPECT_TRUE(waitForNoPicture());
    panel->show();
    EXPECT_TRUE(waitForPicture(usualPlace));
}

TEST_F(LayerPanelTest, FloatsAboveAFullScreenWindow) {
    const WaylandReceiver receiver(WaylandReceiver::Kind::Foot);
    sway::command(QStringLiteral("fullscreen enable"));
    panel->show();
    EXPECT_TRUE(waitForPicture(usualPlace));
    EXPECT_EQ(sway::focusedTitle(), receiver.title());
}

TEST_F(LayerPanelTest, IsDrawnForTheScaleOfTheScreen) {
    sway::command(QStringLiteral("output HEADLESS-1 scale 2"));
    panel->show();
    EXPECT_TRUE(waitForPicture({(1280 - 480) / 2, 800 - 2 * (aboveEdge + 84), 480, 168}));
    EXPECT_EQ(panel->canvas().scale, 2);
    sway::command(QStringLiteral("output HEADLESS-1 scale 1"));
    EXPECT_TRUE(waitForPicture(usualPlace));
    EXPECT_EQ(panel->canvas().scale, 1);
}

TEST_F(LayerPanelTest, IsDrawnForAScaleBetweenWholeNumbers) {
    sway::command(QStringLiteral("output HEADLESS-1 scale 1.5"));
    panel->show();
    EXPECT_TRUE(waitFor([&] {
        draw();
        const QRect place = pictureAt(sway::screenshot());
        return std::abs(place.width() - 360) <= 2 && std::abs(place.height() - 126) <= 2;
    }));
    EXPECT_GE(panel->canvas().scale, 1.5);
}

TEST_F(LayerPanelTest, MovesToAnotherScreenWhenItsOwnIsUnplugged) {
    sway::command(QStringLiteral("create_output"));
    sway::command(QStringLiteral("focus output HEADLESS-1"));
    panel->show();
    ASSERT_TRUE(waitFor([&] {
        draw();
        return !pictureAt(sway::screenshot()).isNull();
    }));
    sway::command(QStringLiteral("output HEADLESS-1 disable"));
    EXPECT_TRUE(waitFor([&] {
        draw();
        return pictureAt(sway::screenshot()).size() == size;
    }));
    panel->hide();
    EXPECT_TRUE(waitForNoPicture());
}

TEST_F(LayerPanelTest, ComesBackWithAScreen) {
    panel->show();
    EXPECT_TRUE(waitForPicture(usualPlace));
    sway::command(QStringLiteral("output HEADLESS-1 disable"));
    letPass(std::chrono::milliseconds(200));
    draw();
    EXPECT_TRUE(panel->isVisible());
    // Another one: of a screen without a monitor that was off, sway 1.10 gives no screenshot.
    sway::command(QStringLiteral("create_output"));
    sway::command(QStringLiteral("output HEADLESS-2 resolution 1280x800"));
    EXPECT_TRUE(waitForPicture(usualPlace));
}

TEST_F(LayerPanelTest, FramesInAnyNumberDoNoHarm) {
    panel->show();
    for (int i = 0; i < 5000; ++i) draw();
    EXPECT_TRUE(waitForPicture(usualPlace));
}

}  // namespace
}  // namespace parlivo::desktop
