// SPDX-License-Identifier: MIT
#include "desktop/indicators/IndicatorProcess.h"
#include "desktop/indicators/Screen.h"
#include "desktop/tray/StateIcons.h"
#include "desktop/tray/TrayHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace parlivo::desktop {
namespace {

const auto idleTitle = QStringLiteral("Pronto — tieni premuto ⌥Spazio per dettare");

/// The status item where there is no panel on the bus but an X tray.
class TrayTest : public testing::Test {
  protected:
    /// Where the icon is, once it is painted: then it hears clicks, too.
    QRect iconIn(const TrayHost& tray) const {
        if (!waitFor([&] { return tray.icon() && isPainted(tray); }))
            ADD_FAILURE() << "no icon came to the tray";
        return tray.icon().value_or(QRect());
    }
    bool isPainted(const TrayHost& tray) const {
        QImage empty(tray.icon()->size(), QImage::Format_RGB32);
        empty.fill(tray.ground());
        return screen.picture(*tray.icon()) != empty;
    }
    bool shows(const TrayHost& tray, const StateIcon& state, StateIcon::Panel panel) const {
        const QRect area = iconIn(tray);
        const QImage expected = state.picture(panel, tray.ground());
        return waitFor([&] { return looksLike(screen.picture(area), expected); });
    }
    /// Where the line of the open menu is; nothing while it is not there.
    std::optional<QPoint> lineOfMenu(const QString& text) {
        for (const QString& line : indicators.perform(QStringLiteral("lines")))
            if (line.section(u' ', 2) == text)
                return QPoint(line.section(u' ', 0, 0).toInt(), line.section(u' ', 1, 1).toInt());
        return {};
    }
    /// A click may come before the program has taken care of its new icon. People click again then.
    bool openMenu(const TrayHost& tray, std::uint8_t button = 1) {
        const QPoint middle = iconIn(tray).center();
        return waitFor([&] {
            screen.click(middle, button);
            return waitFor([this] { return lineOfMenu(idleTitle).has_value(); }, std::chrono::seconds(3));
        });
    }
    void choose(const TrayHost& tray, std::uint8_t button, const QString& text, const QString& word) {
        indicators.forgetSaid();
        ASSERT_TRUE(openMenu(tray, button)) << "button " << int{button};
        EXPECT_TRUE(indicators.said().contains(QStringLiteral("opening")));
        screen.click(lineOfMenu(text).value_or(QPoint()));
        EXPECT_TRUE(indicators.waitForWord(word)) << qPrintable(text);
        EXPECT_TRUE(waitFor([&] { return !lineOfMenu(text); })) << "the menu stays open";
    }

    Screen screen;
    IndicatorProcess indicators;
};

TEST_F(TrayTest, ShowsEveryStateInItsTint) {
    for (const auto ground : {StateIcon::Panel::Light, StateIcon::Panel::Dark}) {
        const TrayHost tray(ground == StateIcon::Panel::Dark ? TrayHost::Panel::Dark
                                                             : TrayHost::Panel::Light);
        for (const StateIcon& state : stateIcons) {
            indicators.perform(QStringLiteral("icon ") + state.words());
            EXPECT_TRUE(shows(tray, state, ground)) << state.symbol;
        }
    }
}

TEST_F(TrayTest, CanBeReadOnAPanelThatTellsNoColours) {
    for (const auto ground : {StateIcon::Panel::Light, StateIcon::Panel::Dark}) {
        const TrayHost tray(ground == StateIcon::Panel::Dark ? TrayHost::Panel::SilentDark
                                                             : TrayHost::Panel::SilentLight);
        for (const StateIcon& state : {stateIcons[0], stateIcons[1], stateIcons[0]}) {
            indicators.perform(QStringLiteral("icon ") + state.words());
            EXPECT_TRUE(shows(tray, state, ground)) << state.symbol;
        }
    }
}

TEST_F(TrayTest, AnyClickOpensTheMenuAndEveryChoiceIsPassedOn) {
    const TrayHost tray;
    indicators.perform(QStringLiteral("update 1.4"));
    constexpr std::uint8_t left = 1;
    constexpr std::uint8_t right = 3;
    for (const std::uint8_t button : {left, right}) {
        choose(tray, button, QStringLiteral("Microfono: ⚠️ non richiesto — clicca"),
               QStringLiteral("chosen microphone"));
        choose(tray, button, QStringLiteral("Accessibilità: ⛔️ manca — clicca"),
               QStringLiteral("chosen accessibility"));
        choose(tray, button, QStringLiteral("⬆️ Aggiorna a Parlivo 1.4…"),
               QStringLiteral("chosen update"));
        choose(tray, button, QStringLiteral("Impostazioni…"), QStringLiteral("chosen settings"));
        choose(tray, button, QStringLiteral("Invia feedback…"), QStringLiteral("chosen feedback"));
        choose(tray, button, QStringLiteral("Esci da Parlivo"), QStringLiteral("chosen quit"));
    }
}

TEST_F(TrayTest, TheMenuOpensBesideTheIcon) {
    constexpr std::uint8_t left = 1;
    constexpr std::uint8_t right = 3;
    for (const std::uint8_t button : {left, right}) {
        for (const QRect& place : {QRect(0, 0, 40, 40), QRect(1240, 0, 40, 40), QRect(1240, 760, 40, 40)}) {
            const TrayHost tray(TrayHost::Panel::SilentLight, place);
            ASSERT_TRUE(openMenu(tray, button));
            const QString last = QStringLiteral("Esci da Parlivo");
            const QPoint first = lineOfMenu(idleTitle).value_or(QPoint());
            const int icon = iconIn(tray).center().y();
            EXPECT_EQ(first.y() > icon, place.top() == 0) << "the first line is at " << first.y();
            EXPECT_EQ(lineOfMenu(last).value_or(QPoint()).y() > icon, place.top() == 0);
            EXPECT_LT(std::abs(first.x() - place.center().x()), 400);
        }
    }
}

TEST_F(TrayTest, TheFirstLineCannotBeChosen) {
    const TrayHost tray;
    ASSERT_TRUE(openMenu(tray));
    indicators.forgetSaid();
    screen.click(lineOfMenu(idleTitle).value_or(QPoint()));
    letPass(std::chrono::milliseconds(200));
    EXPECT_TRUE(lineOfMenu(idleTitle)) << "the menu stays open";
    EXPECT_EQ(indicators.said(), QStringList());
}

TEST_F(TrayTest, ComesBackWithTheNextTray) {
    const StateIcon& recording = stateIcons.at(1);
    indicators.perform(QStringLiteral("icon ") + recording.words());
    for (int round = 0; round < 3; ++round) {
        // Its end takes the icon's window along, as the end of a tray that crashes does.
        const TrayHost tray(TrayHost::Panel::Light);
        EXPECT_TRUE(shows(tray, recording, StateIcon::Panel::Light)) << "round " << round;
    }
    EXPECT_TRUE(indicators.isRunning());
    const TrayHost tray;
    choose(tray, 1, QStringLiteral("Impostazioni…"), QStringLiteral("chosen settings"));
}

TEST_F(TrayTest, SurvivesATrayThatDiesUnderTheOpenMenu) {
    auto tray = std::make_unique<TrayHost>();
    ASSERT_TRUE(openMenu(*tray));
    tray.reset();
    const TrayHost next;
    EXPECT_TRUE(waitFor([this] { return !lineOfMenu(idleTitle); })) << "a menu without an icon stays open";
    choose(next, 1, QStringLiteral("Impostazioni…"), QStringLiteral("chosen settings"));
}

/// A tray that people use.
class TrayerTest : public TrayTest {
  protected:
    void start() {
        trayer.start(QStringLiteral("trayer"),
                     {QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--align"),
                      QStringLiteral("left"), QStringLiteral("--height"), QStringLiteral("24"),
                      QStringLiteral("--tint"), QStringLiteral("0xffffff"), QStringLiteral("--transparent"),
                      QStringLiteral("true"), QStringLiteral("--alpha"), QStringLiteral("0")});
        ASSERT_TRUE(trayer.waitForStarted());
    }
    void kill() {
        trayer.kill();
        ASSERT_TRUE(waitFor([this] { return trayer.state() == QProcess::NotRunning; }));
    }
    static bool isRed(const QColor& colour) {
        return colour.red() > 240 && colour.green() < 75 && colour.blue() < 65;
    }
    /// The middle of what is in the red of a recording, nothing while there is none.
    std::optional<QPoint> redSpot() const {
        const QImage picture = screen.picture(QRect(0, 0, 200, 30));
        QRect spot;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (isRed(picture.pixelColor(x, y))) spot |= QRect(x, y, 1, 1);
        return spot.isEmpty() ? std::nullopt : std::optional(spot.center());
    }

    QProcess trayer;
};

TEST_F(TrayerTest, ShowsTheIconAndItsMenuAndComesBackWhenTrayerWasKilled) {
    indicators.perform(QStringLiteral("icon mic.fill red"));
    for (int round = 0; round < 2; ++round) {
        start();
        ASSERT_TRUE(waitFor([this] { return redSpot().has_value(); })) << "round " << round;
        ASSERT_TRUE(waitFor([this] {
            screen.click(redSpot().value_or(QPoint()));
            return waitFor([this] { return lineOfMenu(idleTitle).has_value(); }, std::chrono::seconds(3));
        }));
        indicators.forgetSaid();
        screen.click(lineOfMenu(QStringLiteral("Impostazioni…")).value_or(QPoint()));
        EXPECT_TRUE(indicators.waitForWord(QStringLiteral("chosen settings")));
        kill();
        EXPECT_TRUE(waitFor([this] { return !redSpot(); }));
    }
}

}  // namespace
}  // namespace parlivo::desktop
