// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/KeyPositions.h"

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <set>

namespace parlivo {
namespace {

TEST(KeyPositionsTest, ThePresetsKeysHaveTheirKeycodes) {
    EXPECT_EQ(KeyPositions::kernelCodeOf(VirtualKey::space), KEY_SPACE);
    EXPECT_EQ(KeyPositions::kernelCodeOf(VirtualKey::grave), KEY_GRAVE);
    EXPECT_EQ(KeyPositions::kernelCodeOf(VirtualKey::returnKey), KEY_ENTER);
}

TEST(KeyPositionsTest, EveryKeyOfAKeyboardConvertsBothWays) {
    std::set<KeyCode> seen;
    for (std::uint32_t code = 0; code < 300; ++code) {
        const auto key = KeyPositions::keyCodeOf(code);
        if (!key) continue;
        EXPECT_EQ(KeyPositions::kernelCodeOf(*key), code);
        EXPECT_TRUE(seen.insert(*key).second) << code;
        EXPECT_LE(*key, VirtualKey::lastCode);
    }
    EXPECT_GT(seen.size(), 200U);
}

TEST(KeyPositionsTest, ModifiersLocksAndCodesBeyondThoseOfTheDisplayAreNoHotKeys) {
    for (const int key : {KEY_RESERVED, KEY_LEFTCTRL, KEY_RIGHTALT, KEY_CAPSLOCK, KEY_NUMLOCK, KEY_SCROLLLOCK,
                          KEY_LEFTMETA, 248, 0x1000})
        EXPECT_EQ(KeyPositions::keyCodeOf(static_cast<std::uint32_t>(key)), std::nullopt) << key;
    EXPECT_EQ(KeyPositions::kernelCodeOf(VirtualKey::firstKernelCode + KEY_LEFTCTRL), std::nullopt);
    EXPECT_EQ(KeyPositions::kernelCodeOf(VirtualKey::firstKernelCode + KEY_SPACE), std::nullopt)
        << "it has a code of its own";
    EXPECT_EQ(KeyPositions::kernelCodeOf(200), std::nullopt);
    EXPECT_EQ(KeyPositions::keyCodeOf(KEY_PAUSE), VirtualKey::firstKernelCode + KEY_PAUSE);
}

}  // namespace
}  // namespace parlivo
