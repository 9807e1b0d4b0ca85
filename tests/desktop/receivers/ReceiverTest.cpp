// SPDX-License-Identifier: MIT
#include "support/Keyboard.h"
#include "support/Receiver.h"

#include <gtest/gtest.h>

namespace parlivo::desktop {
namespace {

/// What the other tests stand on: that keys reach each receiver and that it tells what it got.
class ReceiverTest : public testing::TestWithParam<Receiver::Kind> {};

TEST_P(ReceiverTest, TellsWhatTheKeysTyped) {
    Keyboard keyboard;
    const Receiver receiver(GetParam());
    keyboard.tap(Key::a);
    keyboard.tap(Key::space);
    keyboard.press(Key::leftShift);
    keyboard.tap(Key::a);
    keyboard.release(Key::leftShift);
    keyboard.tap(Key::returnKey);
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("a A\n"))) << receiver.text().toStdString();
}

TEST_P(ReceiverTest, AHeldKeyRepeats) {
    Keyboard keyboard;
    keyboard.setRepeat(std::chrono::milliseconds(200), std::chrono::milliseconds(20));
    const Receiver receiver(GetParam());
    keyboard.press(Key::a);
    EXPECT_TRUE(waitFor([&] { return receiver.text().startsWith(QStringLiteral("aaaaa")); }))
        << receiver.text().toStdString();
}

INSTANTIATE_TEST_SUITE_P(AllKinds, ReceiverTest,
                         testing::Values(Receiver::Kind::Xterm, Receiver::Kind::Gtk3, Receiver::Kind::Gtk4,
                                         Receiver::Kind::Qt, Receiver::Kind::Chromium),
                         [](const auto& kind) { return nameOf(kind.param); });

}  // namespace
}  // namespace parlivo::desktop
