// SPDX-License-Identifier: MIT
#include "desktop/indicators/IndicatorProcess.h"
#include "desktop/tray/DesktopPortal.h"
#include "desktop/tray/NotifierWatcher.h"
#include "desktop/tray/StateIcons.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace parlivo::desktop {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The menu as a user of a panel reads it: separators as "-", hidden lines left out.
QStringList readable(const std::vector<MenuLine>& lines) {
    QStringList result;
    for (const MenuLine& line : lines) {
        if (line.visible) result.append(line.separator ? QStringLiteral("-") : line.label);
    }
    return result;
}

const auto idleTitle = QStringLiteral("Pronto — tieni premuto ⌥Spazio per dettare");

const QStringList idleMenu{idleTitle,
                           QStringLiteral("-"),
                           QStringLiteral("Microfono: ⚠️ non richiesto — clicca"),
                           QStringLiteral("Accessibilità: ⛔️ manca — clicca"),
                           QStringLiteral("-"),
                           QStringLiteral("Impostazioni…"),
                           QStringLiteral("Invia feedback…"),
                           QStringLiteral("-"),
                           QStringLiteral("Esci da Parlivo")};

NotifierItem itemOn(const NotifierWatcher& panel) {
    if (!waitFor([&] { return !panel.items().isEmpty(); })) ADD_FAILURE() << "no item came to the panel";
    return {panel.bus(), panel.items().value(0)};
}

TEST(StatusItemOnTheBusTest, ShowsItsMenu) {
    const NotifierWatcher panel;
    IndicatorProcess indicators;
    const NotifierItem item = itemOn(panel);
    const auto lines = item.menu();
    ASSERT_EQ(lines.size(), 10U);
    EXPECT_EQ(readable(lines), idleMenu);
    EXPECT_FALSE(lines[0].enabled);
    for (const std::size_t index : std::initializer_list<std::size_t>{2, 3, 6, 7, 9})
        EXPECT_TRUE(lines[index].enabled) << index;
    EXPECT_FALSE(lines[5].visible) << "no update yet";
    EXPECT_EQ(lines[6].shortcut, QStringLiteral("Control+,"));
    EXPECT_EQ(lines[9].shortcut, QStringLiteral("Control+Q"));
}

TEST(StatusItemOnTheBusTest, PassesEveryChoiceOn) {
    const NotifierWatcher panel;
    IndicatorProcess indicators;
    indicators.perform(QStringLiteral("update 1.4"));
    const NotifierItem item = itemOn(panel);
    const std::vector<std::pair<QString, QString>> choices{
        {idleMenu[2], QStringLiteral("chosen microphone")},
        {idleMenu[3], QStringLiteral("chosen accessibility")},
        {QStringLiteral("⬆️ Aggiorna a Parlivo 1.4…"), QStringLiteral("chosen update")},
        {idleMenu[5], QStringLiteral("chosen settings")},
        {idleMenu[6], QStringLiteral("chosen feedback")},
        {idleMenu[8], QStringLiteral("chosen quit")},
    };
    for (const auto& [label, word] : choices) {
        indicators.forgetSaid();
        item.choose(label);
        EXPECT_TRUE(indicators.waitForWord(word)) << qPrintable(label);
        EXPECT_THAT(indicators.said(), ElementsAre(word));
    }
}

TEST(StatusItemOnTheBusTest, RefreshesThePermissionLinesWhenItOpens) {
    const NotifierWatcher panel;
    IndicatorProcess indicators;
    const NotifierItem item = itemOn(panel);
    indicators.perform(QStringLiteral("restate"));
    EXPECT_EQ(readable(item.menu()), idleMenu) << "nothing changes before the menu opens";
    item.openMenu();
    EXPECT_TRUE(indicators.waitForWord(QStringLiteral("opening")));
    EXPECT_TRUE(waitFor([&] {
        const QStringList lines = readable(item.menu());
        return lines.contains(QStringLiteral("Microfono: ✅")) &&
               lines.contains(QStringLiteral("Accessibilità: ✅"));
    }));
}

TEST(StatusItemOnTheBusTest, FollowsTitleAndUpdate) {
    const NotifierWatcher panel;
    IndicatorProcess indicators;
    const NotifierItem item = itemOn(panel);
    indicators.perform(QStringLiteral("title ⚠️ R&D: a_b.wav & c"));
    indicators.perform(QStringLiteral("update 2.0.1"));
    EXPECT_TRUE(waitFor([&] {
        return readable(item.menu()).contains(QStringLiteral("⬆️ Aggiorna a Parlivo 2.0.1…"));
    }));
    EXPECT_EQ(item.menu()[0].label, QStringLiteral("⚠️ R_&D: a__b.wav & c"))
        << "a panel takes single underscores for marks of a shortcut";
    indicators.perform(QStringLiteral("update none"));
    EXPECT_TRUE(waitFor([&] { return !item.menu()[5].visible; }));
}

TEST(StatusItemOnTheBusTest, ComesWithThePanelAndComesBackWithTheNext) {
    IndicatorProcess indicators;
    indicators.perform(QStringLiteral("title 🔴 Registrazione…"));
    for (int round = 0; round < 3; ++round) {
        const NotifierWatcher panel;
        const NotifierItem item = itemOn(panel);
        EXPECT_EQ(readable(item.menu()).value(0),
                  round == 0 ? QStringLiteral("🔴 Registrazione…") : QStringLiteral("⏳ Trascrizione…"));
        indicators.perform(QStringLiteral("title ⏳ Trascrizione…"));
    }
    EXPECT_TRUE(indicators.isRunning());
}

TEST(StatusItemOnTheBusTest, ShowsEveryStateInItsTint) {
    for (const bool dark : {false, true}) {
        const DesktopPortal portal(dark ? DesktopPortal::Scheme::Dark : DesktopPortal::Scheme::Light);
        const NotifierWatcher panel;
        IndicatorProcess indicators;
        const NotifierItem item = itemOn(panel);
        for (const StateIcon& state : stateIcons) {
            indicators.perform(QStringLiteral("icon ") + state.words());
            const QImage expected = state.picture(dark ? StateIcon::Panel::Dark : StateIcon::Panel::Light);
            EXPECT_TRUE(waitFor([&] { return looksLike(item.icon(expected.width()), expected); }))
                << state.symbol << (dark ? " on a dark panel" : " on a light panel");
        }
    }
}

TEST(StatusItemOnTheBusTest, FollowsTheDesktopsColours) {
    DesktopPortal portal(DesktopPortal::Scheme::Light);
    const NotifierWatcher panel;
    const IndicatorProcess indicators;
    const NotifierItem item = itemOn(panel);
    const StateIcon& idle = stateIcons.front();
    const auto shows = [&](StateIcon::Panel ground) {
        return waitFor([&] { return looksLike(item.icon(22), idle.picture(ground)); });
    };
    EXPECT_TRUE(shows(StateIcon::Panel::Light));
    portal.prefer(DesktopPortal::Scheme::Dark);
    EXPECT_TRUE(shows(StateIcon::Panel::Dark));
}

TEST(StatusItemOnTheBusTest, WaitsForTheHost) {
    NotifierWatcher panel(NotifierWatcher::Host::ComesLater);
    IndicatorProcess indicators;
    letPass(std::chrono::milliseconds(300));
    EXPECT_THAT(panel.items(), IsEmpty());
    panel.addHost();
    EXPECT_EQ(readable(itemOn(panel).menu()), idleMenu);
}

}  // namespace
}  // namespace parlivo::desktop
