// SPDX-License-Identifier: MIT
#include "desktop/wayland/Hands.h"
#include "desktop/wayland/Sway.h"
#include "platform/linux/sway/BindingRecord.h"
#include "platform/linux/sway/SwayHotKeyService.h"
#include "platform/linux/wayland/NoOpKey.h"
#include "platform/linux/wayland/SeatKeymap.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <tuple>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using parlivo::sway::BindingRecord;
using parlivo::sway::SwayHotKeyService;

constexpr HotKeyIdentity identity{.signature = 1, .id = 1};

QString swaySocket() {
    return qEnvironmentVariable("SWAYSOCK");
}

/// Takes the binding away, if it is there.
bool wasBound(const char* options) {
    return sway::accepts(QStringLiteral("unbindcode ") + QString::fromLatin1(options));
}

/// The hot key of a running sway, pressed by a user.
class SwayHotKeyTest : public testing::Test {
  protected:
    SwayHotKeyTest() {
        service.emplace(swaySocket());
        handler = service->installHandler([this] { edges += u'+'; }, [this] { edges += u'-'; },
                                          [this](std::optional<HotKeyRefusal>) { ++changes; });
    }
    void registerOption(KeyCode key) {
        auto result = service->registerHotKey(key, HotKeyModifier::option, identity);
        ASSERT_TRUE(std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(result));
        registration = std::get<std::unique_ptr<HotKeyRegistration>>(std::move(result));
    }
    bool edgesBecome(const QString& expected) {
        return waitFor([&] { return edges == expected; }, 10s);
    }
    void holdAndRelease() {
        hands.press({KEY_LEFTALT, KEY_SPACE});
        hands.release({KEY_SPACE, KEY_LEFTALT});
    }

    Hands hands;
    QString edges;
    int changes = 0;
    std::optional<SwayHotKeyService> service;
    std::unique_ptr<HotKeyHandler> handler;
    std::unique_ptr<HotKeyRegistration> registration;
};

TEST_F(SwayHotKeyTest, TellsBothEdgesOfAHold) {
    registerOption(VirtualKey::space);
    hands.press({KEY_LEFTALT, KEY_SPACE});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    letPass(1s);  // keys repeat by then
    EXPECT_EQ(edges, QStringLiteral("+"));
    hands.release({KEY_SPACE, KEY_LEFTALT});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-")));
}

TEST_F(SwayHotKeyTest, TheModifierMayComeUpFirst) {
    registerOption(VirtualKey::space);
    for (int i = 0; i < 3; ++i) {
        hands.press({KEY_LEFTALT, KEY_SPACE});
        hands.release({KEY_LEFTALT, KEY_SPACE});
    }
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-+-+-"))) << qPrintable(edges);
}

TEST_F(SwayHotKeyTest, OnlyTheCombinationItselfCounts) {
    registerOption(VirtualKey::grave);
    hands.press({KEY_LEFTALT, KEY_SPACE});
    hands.release({KEY_SPACE, KEY_LEFTALT});
    hands.press({KEY_LEFTCTRL, KEY_LEFTALT, KEY_GRAVE});
    hands.release({KEY_GRAVE, KEY_LEFTALT, KEY_LEFTCTRL});
    hands.tap(KEY_GRAVE);
    hands.press({KEY_LEFTALT, KEY_GRAVE});
    hands.release({KEY_GRAVE, KEY_LEFTALT});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-"))) << qPrintable(edges);
}

TEST_F(SwayHotKeyTest, LocksDoNotMatter) {
    registerOption(VirtualKey::space);
    hands.tap(KEY_CAPSLOCK);
    hands.tap(KEY_NUMLOCK);
    holdAndRelease();
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-")));
}

TEST_F(SwayHotKeyTest, NothingIsLeftBoundAfterTheRegistration) {
    registerOption(VirtualKey::space);
    registration.reset();
    EXPECT_FALSE(wasBound("Mod1+65"));
    EXPECT_FALSE(wasBound("--release Mod1+65"));
    EXPECT_TRUE(BindingRecord(swaySocket()).chords().isEmpty());
    registerOption(VirtualKey::grave);
    EXPECT_TRUE(wasBound("Mod1+49"));
    EXPECT_TRUE(wasBound("--release Mod1+49"));
}

TEST_F(SwayHotKeyTest, AReloadOfTheConfigurationTakesNothingAway) {
    registerOption(VirtualKey::space);
    sway::command(QStringLiteral("reload"));
    EXPECT_TRUE(waitFor([&] {
        holdAndRelease();
        letPass(50ms);
        return edges.startsWith(QStringLiteral("+-"));
    }));
    EXPECT_EQ(changes, 0);
}

TEST_F(SwayHotKeyTest, AHeldKeyThatIsGivenUpHasItsRelease) {
    registerOption(VirtualKey::space);
    hands.press({KEY_LEFTALT, KEY_SPACE});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    registration.reset();
    EXPECT_EQ(edges, QStringLiteral("+-"));
    hands.release({KEY_SPACE, KEY_LEFTALT});
    registerOption(VirtualKey::space);
    holdAndRelease();
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-+-"))) << "the compositor lives, and the key works";
}

TEST_F(SwayHotKeyTest, WhatAKilledProgramLeftIsUndone) {
    const BindingRecord record(swaySocket());
    sway::command(QStringLiteral("bindcode --no-repeat Mod4+49 nop parlivo-press"));
    sway::command(QStringLiteral("bindcode --release Mod4+49 nop parlivo-release"));
    record.write({"Mod4+49"});
    registerOption(VirtualKey::space);
    EXPECT_FALSE(wasBound("Mod4+49"));
    EXPECT_FALSE(wasBound("--release Mod4+49"));
    EXPECT_EQ(record.chords(), QList<QByteArray>{"Mod1+65"});
}

TEST_F(SwayHotKeyTest, WhatWasLeftInAnotherSwayIsNotUndoneHere) {
    BindingRecord(QStringLiteral("/run/another.sock")).write({"Mod4+49"});
    sway::command(QStringLiteral("bindcode Mod4+49 nop users-own"));
    registerOption(VirtualKey::space);
    EXPECT_TRUE(wasBound("Mod4+49"));
}

TEST_F(SwayHotKeyTest, AnyCombinationOfThePositionsWorks) {
    const auto f9 = service->keyCodeOf(KEY_F9 + 8);
    const auto semicolon = service->keyCodeOf(KEY_SEMICOLON + 8);
    ASSERT_TRUE(f9 && semicolon);
    EXPECT_EQ(service->keyCodeOf(KEY_LEFTALT + 8), std::nullopt);
    auto result = service->registerHotKey(*f9, 0, identity);
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(result));
    hands.tap(KEY_F9);
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-"))) << qPrintable(edges);
    std::get<std::unique_ptr<HotKeyRegistration>>(result).reset();
    result = service->registerHotKey(*semicolon, HotKeyModifier::control | HotKeyModifier::command, identity);
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(result));
    hands.tap(KEY_F9);
    hands.press({KEY_LEFTCTRL, KEY_LEFTMETA, KEY_SEMICOLON});
    hands.release({KEY_SEMICOLON, KEY_LEFTMETA, KEY_LEFTCTRL});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-+-"))) << qPrintable(edges);
}

TEST_F(SwayHotKeyTest, ATrialOfAnotherCombinationLeavesTheHotKeyAlone) {
    registerOption(VirtualKey::space);
    constexpr HotKeyIdentity trial{.signature = 1, .id = 2};
    std::ignore = service->registerHotKey(VirtualKey::grave, HotKeyModifier::option, trial);
    EXPECT_FALSE(wasBound("Mod1+49"));
    holdAndRelease();
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-"))) << qPrintable(edges);
}

TEST_F(SwayHotKeyTest, KeysAreNamedByTheLayoutInUse) {
    SwayHotKeyService named(swaySocket(), nullptr, wayland::SeatKeymap::open());
    hands.tap(KEY_LEFTSHIFT);
    // The keyboard of these hands is an Italian one.
    EXPECT_TRUE(waitFor([&] { return named.keyLabel(VirtualKey::grave) == QStringLiteral("\\"); }))
        << qPrintable(named.keyLabel(VirtualKey::grave));
    EXPECT_EQ(named.keyLabel(*service->keyCodeOf(KEY_SEMICOLON + 8)), QStringLiteral("Ò"));
    // Our own keyboards are no user's.
    const auto tap = wayland::NoOpKey::make();
    ASSERT_TRUE(tap);
    tap->tap();
    letPass(100ms);
    EXPECT_EQ(named.keyLabel(VirtualKey::grave), QStringLiteral("\\"));
}

TEST_F(SwayHotKeyTest, AKeyThatNoKeyboardHasIsRefused) {
    const auto result = service->registerHotKey(0x7fff, HotKeyModifier::option, identity);
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(result));
    EXPECT_EQ(std::get<HotKeyRefusal>(result),
              (HotKeyRefusal{.status = EINVAL, .reason = HotKeyRefusal::Reason::Unusable}));
}

TEST_F(SwayHotKeyTest, WhatTheConfigurationBindsIsTaken) {
    // As tests/support/desktop writes it.
    const auto f12 = service->keyCodeOf(KEY_F12 + 8);
    const auto result = service->registerHotKey(*f12, HotKeyModifier::option, identity);
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(result));
    EXPECT_EQ(std::get<HotKeyRefusal>(result),
              (HotKeyRefusal{.status = EBUSY, .reason = HotKeyRefusal::Reason::Taken}));
    int mayBeFree = 0;
    service->watchRefused([&] { ++mayBeFree; });
    sway::command(QStringLiteral("reload"));
    EXPECT_TRUE(waitFor([&] { return mayBeFree > 0; }));
}

TEST(SwayHotKeyWithoutSwayTest, IsRefused) {
    SwayHotKeyService service(QStringLiteral("/nonexistent/sway.sock"));
    const auto result = service.registerHotKey(VirtualKey::space, HotKeyModifier::option, identity);
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(result));
    EXPECT_EQ(std::get<HotKeyRefusal>(result).status, ENOTCONN);
}

}  // namespace
}  // namespace parlivo::desktop
