// SPDX-License-Identifier: MIT
#include "desktop/hotkey/HotKeyFixture.h"
#include "platform/linux/x11/NoOpKey.h"
#include "support/KeyWatch.h"
#include "support/Receiver.h"

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

/// What a focused application notices of a hold: nothing, and it goes on taking keys.
class HotKeyLeakTest : public HotKeyTest, public testing::WithParamInterface<Receiver::Kind> {
  protected:
    void hold(const Receiver& receiver) {
        keyboard.press(Key::leftAlt);
        keyboard.press(Key::space);
        ASSERT_TRUE(edges(1, 0)) << seen();
        letPass(longHold);
        ASSERT_EQ(receiver.text(), QString());
    }
    void expectOnlyWhatIsTypedNow(const Receiver& receiver) {
        keyboard.tap(Key::a);
        keyboard.tap(Key::space);
        keyboard.tap(Key::a);
        EXPECT_TRUE(receiver.waitForText(QStringLiteral("a a"), 5s))
            << '"' << receiver.text().toStdString() << '"';
        EXPECT_TRUE(edges(1, 1)) << seen();
    }
};

TEST_P(HotKeyLeakTest, NothingLeaksWhenTheModifierIsReleasedFirst) {
    const Receiver receiver(GetParam());
    take("opt-space");
    hold(receiver);
    keyboard.release(Key::leftAlt);
    letPass(longHold);
    keyboard.release(Key::space);
    expectOnlyWhatIsTypedNow(receiver);
}

TEST_P(HotKeyLeakTest, NothingLeaksWhenTheKeyIsReleasedFirst) {
    const Receiver receiver(GetParam());
    take("opt-space");
    hold(receiver);
    keyboard.release(Key::space);
    letPass(longHold);
    keyboard.release(Key::leftAlt);
    expectOnlyWhatIsTypedNow(receiver);
}

TEST_P(HotKeyLeakTest, ATapOpensNoMenu) {
    const Receiver receiver(GetParam());
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    ASSERT_TRUE(edges(1, 0)) << seen();
    KeyWatch watch;
    keyboard.release(Key::space);
    EXPECT_TRUE(watch.waitFor(x11::noOpKey, defaultTimeout));
    keyboard.release(Key::leftAlt);
    expectOnlyWhatIsTypedNow(receiver);
}

TEST_P(HotKeyLeakTest, ATapOpensNoMenuWhileTheProgramIsBusyWithIt) {
    const Receiver receiver(GetParam());
    take("opt-space");
    KeyWatch watch;
    bool shown = false;
    handler.reset();
    handler = service.installHandler(
        [&] {
            // As a fast user does while a microphone is being opened.
            ++presses;
            keyboard.release(Key::space);
            shown = watch.waitFor(x11::noOpKey, defaultTimeout);
            keyboard.release(Key::leftAlt);
        },
        [&] { ++releases; }, {});
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    ASSERT_TRUE(edges(1, 1)) << seen();
    EXPECT_TRUE(shown);
    expectOnlyWhatIsTypedNow(receiver);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, HotKeyLeakTest,
                         testing::Values(Receiver::Kind::Xterm, Receiver::Kind::Gtk3, Receiver::Kind::Gtk4,
                                         Receiver::Kind::Qt, Receiver::Kind::Chromium),
                         [](const auto& kind) { return nameOf(kind.param); });

}  // namespace
}  // namespace parlivo::desktop
