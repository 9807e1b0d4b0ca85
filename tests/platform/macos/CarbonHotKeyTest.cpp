// SPDX-License-Identifier: MIT
#include "input/HotKeyManager.h"
#include "platform/macos/MacTest.h"
#include "platform/macos/fakes/FakeCarbon.h"
#include "platform/macos/input/CarbonHotKeyService.h"

#include <memory>

namespace parlivo {
namespace {

constexpr std::uint32_t signature = 0x50524C56;  // "PRLV"

const QString install = QStringLiteral("install keyb:5 keyb:6");
const QString optionSpace = QStringLiteral("register key 49 mask 0x0800 as PRLV/1 options 0");

class CarbonHotKeyTest : public MacTest {
  protected:
    CarbonHotKeyTest() {
        mac::resetCarbon();
        platform.hotKeys().real = &service;
        manager->onKeyDown = [this] { ++downs; };
        manager->onKeyUp = [this] { ++ups; };
    }

    QStringList applied(const char* preset) {
        store(QStringLiteral("hotkeyPreset"), QString::fromLatin1(preset));
        mac::takeCalls();
        manager->applyCurrentPreset();
        return mac::takeCalls();
    }

    CarbonHotKeyService service;
    std::unique_ptr<HotKeyManager> manager = std::make_unique<HotKeyManager>();
    int downs = 0;
    int ups = 0;
};

TEST_F(CarbonHotKeyTest, TheHandlerIsInstalledOnceAndBeforeTheFirstRegistration) {
    EXPECT_EQ(applied("opt-space"), QStringList({install, optionSpace}));
    EXPECT_EQ(applied("opt-space"), QStringList({QStringLiteral("unregister"), optionSpace}));
}

TEST_F(CarbonHotKeyTest, EachPresetRegistersItsCodeAndMask) {
    applied("opt-space");
    struct Row {
        const char* preset;
        const char* call;
    };
    for (const Row& row : {Row{"ctrl-opt-space", "register key 49 mask 0x1800 as PRLV/1 options 0"},
                           Row{"cmd-shift-space", "register key 49 mask 0x0300 as PRLV/1 options 0"},
                           Row{"opt-backtick", "register key 50 mask 0x0800 as PRLV/1 options 0"},
                           Row{"opt-space", "register key 49 mask 0x0800 as PRLV/1 options 0"},
                           Row{"no such preset", "register key 49 mask 0x0800 as PRLV/1 options 0"}}) {
        EXPECT_EQ(applied(row.preset),
                  QStringList({QStringLiteral("unregister"), QString::fromLatin1(row.call)}));
        EXPECT_EQ(mac::hotKeysInForce(), 1);
    }
}

TEST_F(CarbonHotKeyTest, ARefusalGoesToTheLogWithItsStatusAndLeavesNoHotKey) {
    applied("opt-space");
    mac::carbon().refuseWith = -9878;
    EXPECT_EQ(applied("opt-backtick").size(), 2);
    EXPECT_EQ(mac::hotKeysInForce(), 0);
    EXPECT_EQ(logged(),
              QStringList(QStringLiteral("registrazione hotkey fallita (status -9878) — probabilmente già "
                                         "in uso da un'altra app")));
    mac::carbon().refuseWith = 0;
    EXPECT_EQ(applied("opt-space"), QStringList(optionSpace)) << "there is nothing to unregister";
    EXPECT_EQ(mac::hotKeysInForce(), 1);
}

TEST_F(CarbonHotKeyTest, PressedAndReleasedEventsReachTheCallbacks) {
    applied("opt-space");
    EXPECT_TRUE(mac::deliverHotKey(true, signature, 1));
    EXPECT_EQ(downs, 1);
    EXPECT_EQ(ups, 0);
    EXPECT_TRUE(mac::deliverHotKey(false, signature, 1));
    EXPECT_EQ(downs, 1);
    EXPECT_EQ(ups, 1);
}

TEST_F(CarbonHotKeyTest, AHoldGivesOnePressAndOneRelease) {
    applied("opt-space");
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(mac::deliverHotKey(true, signature, 1));
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(mac::deliverHotKey(false, signature, 1));
    EXPECT_EQ(downs, 1);
    EXPECT_EQ(ups, 1);
}

TEST_F(CarbonHotKeyTest, EventsOfOtherHotKeysAreLeftToOthers) {
    applied("opt-space");
    EXPECT_FALSE(mac::deliverHotKey(true, signature, 2));
    EXPECT_FALSE(mac::deliverHotKey(true, 0x4F544852, 1));
    EXPECT_EQ(downs, 0);
}

TEST_F(CarbonHotKeyTest, AHoldEndsWithItsRegistration) {
    applied("opt-space");
    mac::deliverHotKey(true, signature, 1);
    applied("opt-backtick");
    EXPECT_EQ(ups, 1) << "a recording that nobody ends would run on";
    mac::deliverHotKey(true, signature, 1);
    EXPECT_EQ(downs, 2);
}

TEST_F(CarbonHotKeyTest, TheEndUnregistersAndThenRemovesTheHandlerOnce) {
    applied("opt-space");
    manager.reset();
    EXPECT_EQ(mac::takeCalls(), QStringList({QStringLiteral("unregister"), QStringLiteral("remove")}));
    EXPECT_EQ(mac::hotKeysInForce(), 0);
    EXPECT_EQ(mac::handlersInForce(), 0);
    EXPECT_FALSE(mac::deliverHotKey(true, signature, 1));
}

TEST_F(CarbonHotKeyTest, AManagerThatWasNeverAppliedTouchesNothing) {
    manager.reset();
    EXPECT_TRUE(mac::takeCalls().isEmpty());
}

}  // namespace
}  // namespace parlivo
