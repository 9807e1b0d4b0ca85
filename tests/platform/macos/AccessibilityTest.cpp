// SPDX-License-Identifier: MIT
#include "platform/macos/MacTest.h"
#include "platform/macos/fakes/FakeQuartz.h"
#include "platform/macos/session/AccessibilityTrust.h"

namespace parlivo {
namespace {

class AccessibilityTest : public MacTest {
  protected:
    ~AccessibilityTest() override { mac::quartz() = {}; }
};

TEST_F(AccessibilityTest, AsksWithoutAPromptByThePlainQuery) {
    EXPECT_FALSE(isAccessibilityTrusted());
    mac::quartz().trusted = true;
    EXPECT_TRUE(isAccessibilityTrusted());
    EXPECT_EQ(mac::takeCalls(), QStringList({QStringLiteral("trusted?"), QStringLiteral("trusted?")}));
}

TEST_F(AccessibilityTest, AsksTheUserByTheOptionThatIsReleased) {
    EXPECT_FALSE(isAccessibilityTrustedOrAsk());
    EXPECT_EQ(mac::takeCalls(), QStringList({QStringLiteral("options: prompt = true"),
                                             QStringLiteral("trusted? with options")}));
    EXPECT_EQ(mac::living(), 0);
    mac::quartz().trusted = true;
    EXPECT_TRUE(isAccessibilityTrustedOrAsk());
}

}  // namespace
}  // namespace parlivo
