// SPDX-License-Identifier: MIT
#include "desktop/hotkey/HotKeyFixture.h"
#include "desktop/hotkey/OtherClient.h"
#include "platform/linux/x11/NoOpKey.h"
#include "support/KeyWatch.h"
#include "support/Receiver.h"

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

/// Another client holds Alt+Space as window managers do: by a grab of the master keyboard.
class HeldByWindowManagerTest : public HotKeyTest {
  protected:
    HeldByWindowManagerTest() { EXPECT_EQ(manager.grabKey(Key::space, XCB_MOD_MASK_1), 0); }

    void hold() {
        keyboard.press(Key::leftAlt);
        keyboard.press(Key::space);
    }

    OtherClient manager;
};

TEST_F(HeldByWindowManagerTest, BothEdgesComeToUs) {
    take("opt-space");
    for (int i = 1; i <= 5; ++i) {
        hold();
        EXPECT_TRUE(edges(i, i - 1)) << seen();
        keyboard.release(Key::space);
        keyboard.release(Key::leftAlt);
        EXPECT_TRUE(edges(i, i)) << seen();
    }
    EXPECT_EQ(manager.keysReceived(), 0);
}

TEST_F(HeldByWindowManagerTest, AGrabThatTheManagerTakesAnewChangesNothing) {
    take("opt-space");
    for (int i = 1; i <= 5; ++i) {
        manager.ungrabKey(Key::space, XCB_MOD_MASK_1);
        ASSERT_EQ(manager.grabKey(Key::space, XCB_MOD_MASK_1), 0);
        hold();
        keyboard.release(Key::space);
        keyboard.release(Key::leftAlt);
        EXPECT_TRUE(edges(i, i)) << seen();
    }
    EXPECT_EQ(manager.keysReceived(), 0);
}

TEST_F(HeldByWindowManagerTest, AModifierThatComesUpFirstDoesNotStayDownForOthers) {
    take("opt-space");
    for (const auto device : {Keyboard::Device::Physical, Keyboard::Device::Synthetic}) {
        presses = 0;
        releases = 0;
        Keyboard keys(device);
        keys.press(Key::leftAlt);
        keys.press(Key::space);
        ASSERT_TRUE(edges(1, 0)) << seen();
        keys.release(Key::leftAlt);
        keys.release(Key::space);
        EXPECT_TRUE(edges(1, 1)) << seen();
        EXPECT_TRUE(waitFor([&] { return !keyboard.isDown(Key::leftAlt); }));
        EXPECT_FALSE(keyboard.isDown(Key::space));
    }
}

TEST_F(HeldByWindowManagerTest, FingersThatLeaveBothKeysAtOnceOpenNoMenu) {
    const Receiver receiver(Receiver::Kind::Qt);
    take("opt-space");
    KeyWatch watch;
    hold();
    EXPECT_TRUE(watch.waitFor(x11::noOpKey, defaultTimeout)) << "not before the release";
    keyboard.release(Key::space);
    keyboard.release(Key::leftAlt);
    keyboard.tap(Key::a);
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("a"))) << receiver.text().toStdString();
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HeldByWindowManagerTest, AHeldKeyGivesOnePressAndOneRelease) {
    take("opt-space");
    hold();
    letPass(longHold);
    EXPECT_TRUE(edges(1, 0)) << seen();
    keyboard.release(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HeldByWindowManagerTest, WhileAMenuOrALockScreenHasTheKeyboardNothingIsReported) {
    take("opt-space");
    ASSERT_TRUE(manager.grabKeyboard());
    hold();
    keyboard.release(Key::space);
    keyboard.release(Key::leftAlt);
    letPass(50ms);
    EXPECT_TRUE(edges(0, 0)) << seen();
    manager.ungrabKeyboard();
    hold();
    keyboard.release(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HeldByWindowManagerTest, AKeyboardThatGoesAwayReleasesTheKeyAndOneThatComesBackWorks) {
    take("opt-space");
    hold();
    ASSERT_TRUE(edges(1, 0)) << seen();
    manager.setKeyboardsEnabled(false);
    EXPECT_TRUE(edges(1, 1)) << seen();
    manager.setKeyboardsEnabled(true);
    const auto works = [&] {
        hold();
        keyboard.release(Key::space);
        keyboard.release(Key::leftAlt);
        return presses > 1;
    };
    EXPECT_TRUE(waitFor(works)) << seen();
    EXPECT_TRUE(waitFor([&] { return presses == releases; })) << seen();
}

TEST_F(HeldByWindowManagerTest, UnregisteringGivesTheKeyBack) {
    take("opt-space");
    registration.reset();
    const auto comes = [&] {
        hold();
        keyboard.release(Key::space);
        keyboard.release(Key::leftAlt);
        return manager.keysReceived() > 0;
    };
    EXPECT_TRUE(waitFor(comes));
    EXPECT_TRUE(edges(0, 0)) << seen();
}

TEST_F(HeldByWindowManagerTest, WhatIsHeldEverywhereIsNotWorthATryAndWhatIsFreeIs) {
    constexpr auto modifiers = XCB_MOD_MASK_1 | XCB_MOD_MASK_CONTROL;
    const std::vector<HotKeyCombination> refused{
        {VirtualKey::space, HotKeyModifier::option | HotKeyModifier::control}};
    {
        OtherClient other;
        ASSERT_EQ(other.grabKeyEverywhere(Key::space, modifiers), 0);
        ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(attempt("ctrl-opt-space")));
        for (int i = 0; i < 3; ++i) EXPECT_FALSE(service.anyMayBeFree(refused));
        EXPECT_TRUE(service.anyMayBeFree({refused.front(), {VirtualKey::space, HotKeyModifier::option}}))
            << "the second is held on the master only";
    }
    EXPECT_TRUE(waitFor([&] { return service.anyMayBeFree(refused); }));
    OtherClient next;
    EXPECT_EQ(next.grabKeyEverywhere(Key::space, modifiers), 0) << "asking has taken nothing";
}

TEST_F(HeldByWindowManagerTest, AManagerThatComesOrGoesIsToldWhileAKeyIsRefused) {
    OtherClient other;
    int told = 0;
    ASSERT_EQ(other.grabKeyEverywhere(Key::space, XCB_MOD_MASK_1 | XCB_MOD_MASK_CONTROL), 0);
    EXPECT_TRUE(std::holds_alternative<HotKeyRefusal>(attempt("ctrl-opt-space")));
    service.watchRefused([&] { ++told; });
    // Once: it is told when the changes have come to rest.
    other.announceWindowManager();
    EXPECT_TRUE(waitFor([&] { return told > 0; }));
    service.watchRefused({});
    letPass(100ms);
    const int before = told;
    other.announceWindowManager();
    letPass(100ms);
    EXPECT_EQ(told, before);
}

}  // namespace
}  // namespace parlivo::desktop
