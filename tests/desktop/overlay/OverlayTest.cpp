// SPDX-License-Identifier: MIT
#include "desktop/indicators/IndicatorProcess.h"
#include "desktop/indicators/Screen.h"
#include "support/Keyboard.h"
#include "support/Receiver.h"

#include <QMouseEvent>
#include <QWidget>

#include <gtest/gtest.h>

namespace parlivo::desktop {
namespace {

/// A plain window of the test's own, of one colour, that counts the clicks it gets.
class Sheet : public QWidget {
  public:
    explicit Sheet(const QRect& area, Qt::WindowStates state = Qt::WindowNoState) {
        setStyleSheet(QStringLiteral("background: #204080"));
        setGeometry(area);
        setWindowState(state);
        show();
    }
    int clicks = 0;

  private:
    void mousePressEvent(QMouseEvent* event) override {
        ++clicks;
        event->accept();
    }
};

const QColor sheetColour(0x20, 0x40, 0x80);

QProcessEnvironment scaledEnvironment(int scale) {
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(scale));
    return environment;
}

class OverlayTest : public testing::Test {
  protected:
    explicit OverlayTest(int displayScale = 1)
        : scale(displayScale), indicators(scaledEnvironment(displayScale)) {}

    /// Where the card is on the screen, without the room for its shadow; an empty rectangle when it
    /// is not shown.
    QRect place() const {
        for (const int margin : {none, shadow}) {
            const QSize size = (QSize(240, 84) + QSize(2 * margin, 2 * margin)) * scale;
            if (const auto window = screen.findWindow(size))
                return window->adjusted(margin * scale, margin * scale, -margin * scale, -margin * scale);
        }
        return {};
    }

    QRect shownPlace() {
        indicators.perform(QStringLiteral("show"));
        if (!waitFor([this] { return !place().isEmpty(); })) ADD_FAILURE() << "the card did not come up";
        return place();
    }
    /// Whether what is drawn there is the card's paper.
    bool cardIsVisibleAt(const QRect& area) const {
        const QColor paper = screen.pixel(area.topLeft() + QPoint(120, 10) * scale);
        return paper.red() > 230 && paper.red() - paper.blue() > 5 && paper.red() - paper.blue() < 30;
    }
    static void run(const QString& program, const QStringList& arguments) {
        ASSERT_EQ(QProcess::execute(program, arguments), 0) << qPrintable(program);
    }

    static constexpr int none = 0;
    static constexpr int shadow = 24;

    const int scale;
    Screen screen;
    IndicatorProcess indicators;
};

TEST_F(OverlayTest, FloatsAboveTheLowerEdgeInTheMiddle) {
    EXPECT_EQ(shownPlace(), QRect((1280 - 240) / 2, 800 - 110 - 84, 240, 84));
    indicators.perform(QStringLiteral("hide"));
    EXPECT_TRUE(waitFor([this] { return place().isEmpty(); }));
}

TEST_F(OverlayTest, StaysClearOfAPanelAtTheBottom) {
    screen.addDock(QRect(0, 760, 1280, 40), {0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0, 1279});
    const QRect expected(520, 760 - 110 - 84, 240, 84);
    EXPECT_TRUE(waitFor([&] { return shownPlace() == expected; })) << place().y();
}

TEST_F(OverlayTest, NeverTakesTheFocus) {
    const Receiver editor(Receiver::Kind::Gtk3);
    Keyboard hands(Keyboard::Device::Synthetic);
    const xcb_window_t focus = screen.focus();
    QString typed;
    for (int cycle = 0; cycle < 200; ++cycle) {
        indicators.perform(QStringLiteral("show"));
        hands.tap(Key::a);
        ASSERT_EQ(screen.focus(), focus) << "shown, cycle " << cycle;
        indicators.perform(QStringLiteral("hide"));
        hands.tap(Key::v);
        ASSERT_EQ(screen.focus(), focus) << "hidden, cycle " << cycle;
        typed += QStringLiteral("av");
    }
    EXPECT_TRUE(editor.waitForText(typed)) << qPrintable(editor.text());
}

TEST_F(OverlayTest, LetsClicksThrough) {
    Sheet sheet(QRect(400, 500, 480, 300));
    ASSERT_TRUE(waitFor([&] { return screen.pixel({420, 520}) == sheetColour; }));
    const QRect area = shownPlace();
    ASSERT_TRUE(waitFor([&] { return cardIsVisibleAt(area); }));
    for (const QPoint& point :
         {area.center(), area.topLeft() + QPoint(30, 5), area.bottomRight() - QPoint(30, 5)})
        screen.click(point);
    EXPECT_TRUE(waitFor([&] { return sheet.clicks == 3; })) << sheet.clicks;
}

TEST_F(OverlayTest, IsAboveWindowsThatOpenLater) {
    const QRect area = shownPlace();
    const Sheet sheet(QRect(400, 500, 480, 300));
    ASSERT_TRUE(waitFor([&] { return screen.pixel({420, 520}) == sheetColour; }));
    EXPECT_TRUE(waitFor([&] { return cardIsVisibleAt(area); }));
    screen.click({420, 520});
    letPass(std::chrono::milliseconds(200));
    EXPECT_TRUE(cardIsVisibleAt(area)) << "after the window was raised";
}

TEST_F(OverlayTest, LiesAboveAFullScreenWindow) {
    const Sheet sheet(QRect(0, 0, 1280, 800), Qt::WindowFullScreen);
    ASSERT_TRUE(waitFor([&] {
        return screen.pixel({5, 5}) == sheetColour && screen.pixel({1275, 795}) == sheetColour;
    }));
    const QRect area = shownPlace();
    EXPECT_TRUE(waitFor([&] { return cardIsVisibleAt(area); }));
}

TEST_F(OverlayTest, IsRoundAndSmoothWithoutACompositor) {
    const Sheet sheet(QRect(0, 0, 1280, 800), Qt::WindowFullScreen);
    ASSERT_TRUE(waitFor([&] { return screen.pixel({1275, 795}) == sheetColour; }));
    const QRect area = shownPlace();
    ASSERT_TRUE(waitFor([&] { return cardIsVisibleAt(area); }));
    const auto at = [&](int x, int y) { return screen.pixel(area.topLeft() + QPoint(x, y)); };
    for (const QPoint corner : {QPoint(1, 1), QPoint(238, 1), QPoint(1, 82), QPoint(238, 82)})
        EXPECT_EQ(at(corner.x(), corner.y()), sheetColour);
    int mixed = 0;
    for (int x = 0; x < 40; ++x) {
        const QColor colour = at(x, 3);
        if (colour != sheetColour && colour.red() < 200) ++mixed;
        EXPECT_GE(colour.red() + 10, sheetColour.red() * 7 / 10)
            << x << ": a fringe, neither sheet nor paper nor edge";
    }
    EXPECT_GT(mixed, 0) << "the round corner is smooth";
    EXPECT_LT(mixed, 12);
}

TEST_F(OverlayTest, IsTransparentAtTheCornersUnderACompositor) {
    QProcess compositor;
    compositor.start(QStringLiteral("xcompmgr"), QStringList());
    ASSERT_TRUE(waitFor([this] { return screen.selectionOwner("_NET_WM_CM_S0") != XCB_NONE; }));
    const Sheet sheet(QRect(0, 0, 1280, 800), Qt::WindowFullScreen);
    ASSERT_TRUE(waitFor([&] { return screen.pixel({1275, 795}) == sheetColour; }));
    const QRect area = shownPlace();
    ASSERT_TRUE(waitFor([&] { return cardIsVisibleAt(area); }));
    const auto at = [&](int x, int y) { return screen.pixel(area.topLeft() + QPoint(x, y)); };
    int blended = 0;
    for (int x = 0; x < 40; ++x) {
        const QColor colour = at(x, 3);
        if (colour != sheetColour && colour.red() < 200) ++blended;
    }
    EXPECT_GT(blended, 0) << "the round corner is smooth";
    const QColor below = at(120, 84 + 4);
    EXPECT_LT(below.blue(), sheetColour.blue()) << "the shadow";
    EXPECT_GT(below.blue(), 0);
    EXPECT_EQ(at(120, 84 + 40), sheetColour) << "and where it ends";
    indicators.perform(QStringLiteral("hide"));
    compositor.kill();
    compositor.waitForFinished();
    ASSERT_TRUE(waitFor([this] { return screen.selectionOwner("_NET_WM_CM_S0") == XCB_NONE; }));
    ASSERT_EQ(shownPlace(), area);
    ASSERT_TRUE(waitFor([&] { return cardIsVisibleAt(area); }));
    EXPECT_EQ(at(1, 1), sheetColour) << "cut again once the compositor has gone";
}

/// On a display where a point is two pixels wide.
class ScaledOverlayTest : public OverlayTest {
  protected:
    ScaledOverlayTest() : OverlayTest(2) {}
};

TEST_F(ScaledOverlayTest, FloatsTwiceAsFarAboveTheLowerEdge) {
    EXPECT_EQ(shownPlace(), QRect((1280 - 480) / 2, 800 - 220 - 168, 480, 168));
    screen.addDock(QRect(0, 760, 1280, 40), {0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0, 1279});
    const QRect expected(400, 760 - 220 - 168, 480, 168);
    EXPECT_TRUE(waitFor([&] { return shownPlace() == expected; })) << place().y();
}

TEST_F(ScaledOverlayTest, IsRoundAndSmoothWithoutACompositor) {
    const Sheet sheet(QRect(0, 0, 1280, 800), Qt::WindowFullScreen);
    ASSERT_TRUE(waitFor([&] { return screen.pixel({1275, 795}) == sheetColour; }));
    const QRect area = shownPlace();
    ASSERT_TRUE(waitFor([&] { return cardIsVisibleAt(area); }));
    const QImage picture = screen.picture(area);
    for (const QPoint corner : {QPoint(3, 3), QPoint(476, 3), QPoint(3, 164), QPoint(476, 164)})
        EXPECT_EQ(picture.pixelColor(corner), sheetColour);
    int mixed = 0;
    for (int x = 0; x < 80; ++x) {
        const QColor colour = picture.pixelColor(x, 7);
        if (colour != sheetColour && colour.red() < 200) ++mixed;
    }
    EXPECT_GT(mixed, 0);
    EXPECT_LT(mixed, 16);
}

/// The X screen as two monitors side by side, the right one without a panel of its own.
class TwoScreensTest : public OverlayTest {
  protected:
    TwoScreensTest() {
        const auto add = [](const char* name, const char* geometry, const char* output) {
            run(QStringLiteral("xrandr"), {QStringLiteral("--setmonitor"), QString::fromLatin1(name),
                                           QString::fromLatin1(geometry), QString::fromLatin1(output)});
        };
        add("left", "640/170x800/210+0+0", "screen");
        add("right", "640/170x800/210+640+0", "none");
    }
    static void unplugRight() {
        run(QStringLiteral("xrandr"), {QStringLiteral("--delmonitor"), QStringLiteral("right")});
    }
};

TEST_F(TwoScreensTest, FloatsOnTheScreenOfTheActiveWindow) {
    screen.addDock(QRect(640, 740, 640, 60), {0, 0, 0, 60, 0, 0, 0, 0, 0, 0, 640, 1279});
    Sheet editor(QRect(100, 100, 300, 200));
    ASSERT_TRUE(waitFor([&] { return editor.isActiveWindow(); }));
    EXPECT_TRUE(waitFor([&] { return shownPlace() == QRect(200, 800 - 110 - 84, 240, 84); })) << place().x();
    editor.move(800, 100);
    EXPECT_TRUE(waitFor([&] { return shownPlace() == QRect(840, 740 - 110 - 84, 240, 84); }))
        << place().x() << " " << place().y();
}

TEST_F(TwoScreensTest, SurvivesTheScreenThatItIsOn) {
    Sheet editor(QRect(800, 100, 300, 200));
    ASSERT_TRUE(waitFor([&] { return editor.isActiveWindow(); }));
    ASSERT_TRUE(waitFor([&] { return shownPlace().x() == 840; }));
    unplugRight();
    const QRect onTheLeft(200, 800 - 110 - 84, 240, 84);
    EXPECT_TRUE(waitFor([&] { return place() == onTheLeft; })) << place().x();
    EXPECT_TRUE(waitFor([&] { return cardIsVisibleAt(onTheLeft); }));
    indicators.perform(QStringLiteral("hide"));
    EXPECT_EQ(shownPlace(), onTheLeft);
}

TEST_F(OverlayTest, DrawsNothingWhileHidden) {
    shownPlace();
    const auto frames = [this] { return indicators.perform(QStringLiteral("frames")).value(0).toInt(); };
    ASSERT_TRUE(waitFor([&] { return frames() > 10; }));
    indicators.perform(QStringLiteral("hide"));
    const int before = frames();
    letPass(std::chrono::milliseconds(300));
    EXPECT_EQ(frames(), before);
}

}  // namespace
}  // namespace parlivo::desktop
