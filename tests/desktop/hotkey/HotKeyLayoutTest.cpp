// SPDX-License-Identifier: MIT
#include "desktop/hotkey/HotKeyFixture.h"
#include "desktop/hotkey/OtherClient.h"

#include <QProcess>

namespace parlivo::desktop {
namespace {

class HotKeyLayoutTest : public HotKeyTest {};

TEST_F(HotKeyLayoutTest, FollowsNumLockToAnotherModifier) {
    take("opt-space");
    OtherClient other;
    constexpr std::size_t thirdModifier = 5;
    ASSERT_TRUE(other.moveModifier(Key::numLock, thirdModifier));
    keyboard.setLocks(XCB_MOD_MASK_3);
    EXPECT_TRUE(becomesHeard()) << seen();
}

/// Loads the present map with Num Lock on another modifier, by the keyboard extension alone.
void moveNumLockByXkb(const char* modifier) {
    QProcess shell;
    shell.start(QStringLiteral("sh"),
                {QStringLiteral("-c"),
                 QStringLiteral("setxkbmap us -print | sed 's/xkb_symbols *{ *include \"\\([^\"]*\\)\"/"
                                "xkb_symbols { include \"\\1\" modifier_map %1 { Num_Lock };/' "
                                "| xkbcomp -w 0 - $DISPLAY")
                     .arg(QString::fromLatin1(modifier))});
    ASSERT_TRUE(shell.waitForFinished());
    ASSERT_EQ(shell.exitCode(), 0) << shell.readAllStandardError().toStdString();
}

TEST_F(HotKeyLayoutTest, TellsWhatTheLayoutPrintsLeftOfOne) {
    struct Layout {
        const char* name;
        const char16_t* printed;
    };
    for (const auto& [name, printed] :
         {Layout{"it", u"\\"}, Layout{"de", u"^"}, Layout{"fr", u"²"}, Layout{"us", u"`"}}) {
        ASSERT_EQ(QProcess::execute(QStringLiteral("setxkbmap"), {QString::fromLatin1(name)}), 0);
        EXPECT_EQ(service.keyLabel(VirtualKey::grave), QStringView(printed).toString()) << name;
    }
}

TEST_F(HotKeyLayoutTest, FollowsNumLockToAnotherModifierByXkbEvents) {
    take("opt-space");
    moveNumLockByXkb("Mod3");
    keyboard.setLocks(XCB_MOD_MASK_3);
    EXPECT_TRUE(becomesHeard()) << seen();
    EXPECT_TRUE(outcomes.empty());
}

TEST_F(HotKeyLayoutTest, ALockThatAnotherClientHasAtTheNewPlaceIsReportedUntilItIsFree) {
    take("opt-space");
    OtherClient other;
    ASSERT_EQ(other.grabKeyEverywhere(Key::space, XCB_MOD_MASK_1 | XCB_MOD_MASK_3), 0);
    moveNumLockByXkb("Mod3");
    ASSERT_TRUE(waitFor([&] { return !outcomes.empty(); }));
    EXPECT_EQ(outcomes.back(), HotKeyRefusal{10}) << "BadAccess";
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    keyboard.release(Key::leftAlt);
    EXPECT_TRUE(edges(1, 1)) << "without the lock it still works; " << seen();

    other.ungrabKeyEverywhere(Key::space, XCB_MOD_MASK_1 | XCB_MOD_MASK_3);
    moveNumLockByXkb("Mod3");
    EXPECT_TRUE(waitFor([&] { return outcomes.back() == std::nullopt; }));
    EXPECT_EQ(outcomes.size(), 2U) << "each change is told once";
}

TEST_F(HotKeyLayoutTest, KeepsWorkingWhenTheLayoutChanges) {
    take("opt-space");
    int holds = 0;
    for (const char* const layout : {"it", "de", "us,it", "fr", "us"}) {
        Keyboard::setLayout(layout);
        for (std::uint8_t group = 0; group < 2; ++group) {
            keyboard.setGroup(group);
            keyboard.press(Key::leftAlt);
            keyboard.tap(Key::space);
            keyboard.release(Key::leftAlt);
            ++holds;
            EXPECT_TRUE(edges(holds, holds)) << layout << " group " << int{group} << ": " << seen();
        }
    }
}

TEST_F(HotKeyLayoutTest, BacktickIsThePositionLeftOfOneOnEveryLayout) {
    take("opt-backtick");
    int holds = 0;
    for (const char* const layout : {"us", "it", "de"}) {
        Keyboard::setLayout(layout);
        keyboard.press(Key::leftAlt);
        keyboard.tap(Key::grave);
        keyboard.release(Key::leftAlt);
        ++holds;
        EXPECT_TRUE(edges(holds, holds)) << layout << ": " << seen();
    }
}

}  // namespace
}  // namespace parlivo::desktop
