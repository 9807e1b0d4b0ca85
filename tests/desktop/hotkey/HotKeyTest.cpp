// SPDX-License-Identifier: MIT
#include "desktop/hotkey/HotKeyFixture.h"

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

TEST_F(HotKeyTest, EveryPresetReportsBothEdges) {
    int holds = 0;
    for (const Preset& preset : HotKeyManager::presets()) {
        take(preset.id.toLatin1().constData());
        const auto chord = chordOf(preset);
        for (const auto key : chord) keyboard.press(key);
        EXPECT_TRUE(edges(holds + 1, holds)) << preset.id.toStdString() << ": " << seen();
        keyboard.release(chord.back());
        ++holds;
        EXPECT_TRUE(edges(holds, holds)) << preset.id.toStdString() << ": " << seen();
        for (const auto key : chord)
            if (key != chord.back()) keyboard.release(key);
    }
}

TEST_F(HotKeyTest, OnlyTheExactModifiersCount) {
    take("opt-space");
    keyboard.tap(Key::space);
    for (const auto more : {Key::leftControl, Key::leftShift, Key::leftSuper}) {
        keyboard.press(more);
        keyboard.tap(Key::space);
        keyboard.press(Key::leftAlt);
        keyboard.tap(Key::space);
        keyboard.release(Key::leftAlt);
        keyboard.release(more);
    }
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, WorksUnderEveryLock) {
    take("opt-space");
    int holds = 0;
    for (const auto locks : allLocks) {
        keyboard.setLocks(locks);
        keyboard.press(Key::leftAlt);
        keyboard.tap(Key::space);
        keyboard.release(Key::leftAlt);
        ++holds;
        EXPECT_TRUE(edges(holds, holds)) << "locks " << locks << ": " << seen();
    }
}

TEST_F(HotKeyTest, AHeldKeyGivesOnePressAndOneRelease) {
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    letPass(longHold);
    EXPECT_TRUE(edges(1, 0)) << seen();
    keyboard.release(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, ModifiersReleasedFirstDoNotEndTheHold) {
    take("ctrl-opt-space");
    keyboard.press(Key::leftControl);
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    ASSERT_TRUE(edges(1, 0)) << seen();
    keyboard.release(Key::leftAlt);
    keyboard.release(Key::leftControl);
    letPass(longHold);
    EXPECT_TRUE(edges(1, 0)) << seen();
    keyboard.release(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, IgnoresReleasesOfModifiers) {
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    ASSERT_TRUE(edges(1, 1)) << seen();
    keyboard.tap(Key::space);
    EXPECT_TRUE(edges(2, 2)) << seen();
}

TEST_F(HotKeyTest, ManyShortPressesAreAllReported) {
    take("opt-space");
    constexpr int times = 200;
    keyboard.press(Key::leftAlt);
    for (int i = 0; i < times; ++i) {
        keyboard.tap(Key::space);
        // Some are handled one by one, others have to wait for each other.
        if (i % 7 == 0) letPass(1ms);
    }
    EXPECT_TRUE(edges(times, times)) << seen();
}

TEST_F(HotKeyTest, AShortPressIsReportedInOrder) {
    QStringList order;
    handler.reset();
    handler = service.installHandler([&] { order.append(QStringLiteral("down")); },
                                     [&] { order.append(QStringLiteral("up")); }, {});
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    keyboard.tap(Key::space);
    ASSERT_TRUE(waitFor([&] { return order.size() >= 4; }));
    EXPECT_EQ(order.join(QLatin1Char(' ')), QStringLiteral("down up down up"));
}

TEST_F(HotKeyTest, SyntheticKeysCountAsWell) {
    take("opt-space");
    Keyboard synthetic(Keyboard::Device::Synthetic);
    synthetic.press(Key::leftAlt);
    synthetic.press(Key::space);
    EXPECT_TRUE(edges(1, 0)) << seen();
    synthetic.release(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

}  // namespace
}  // namespace parlivo::desktop
