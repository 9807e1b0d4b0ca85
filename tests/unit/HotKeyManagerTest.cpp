// SPDX-License-Identifier: MIT
#include "input/HotKeyChoice.h"
#include "input/HotKeyStatus.h"
#include "unit/HotKeyManagerFixture.h"

#include <vector>

namespace parlivo {
namespace {

struct Row {
    const char* id;
    const char* label;
    KeyCode keyCode;
    HotKeyModifiers modifiers;
};

TEST(PresetTest, TheTableIsOfferedInThisOrder) {
    const std::vector<Row> expected{{"opt-space", "⌥ Spazio", 49, 0x0800},
                                    {"ctrl-opt-space", "⌃⌥ Spazio", 49, 0x1800},
                                    {"cmd-shift-space", "⌘⇧ Spazio", 49, 0x0300},
                                    {"opt-backtick", "⌥ ` (backtick)", 50, 0x0800}};
    const auto& presets = HotKeyManager::presets();
    ASSERT_EQ(presets.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(presets[i].id, QString::fromUtf8(expected[i].id));
        EXPECT_EQ(presets[i].label, QString::fromUtf8(expected[i].label));
        EXPECT_EQ(presets[i].keyCode, expected[i].keyCode) << expected[i].id;
        EXPECT_EQ(presets[i].modifiers, expected[i].modifiers) << expected[i].id;
    }
}

TEST(PresetTest, IsFoundByItsExactId) {
    for (const Preset& preset : HotKeyManager::presets()) {
        EXPECT_EQ(HotKeyManager::preset(preset.id).label, preset.label);
    }
}

TEST(PresetTest, AnUnknownIdGivesTheFirst) {
    for (const char* id : {"", "OPT-SPACE", "opt-space ", "f13"}) {
        EXPECT_EQ(HotKeyManager::preset(QString::fromLatin1(id)).id, QStringLiteral("opt-space")) << id;
    }
}

TEST_F(HotKeyManagerTest, DoesNothingUntilItIsApplied) {
    EXPECT_TRUE(keys().calls.isEmpty());
    manager.reset();
    EXPECT_TRUE(keys().calls.isEmpty());
}

TEST_F(HotKeyManagerTest, WithoutASettingOptionSpaceIsRegistered) {
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls, QStringList({QStringLiteral("install"), QStringLiteral("register 49 2048")}));
    ASSERT_EQ(keys().registered.size(), 1U);
    EXPECT_EQ(keys().registered.front().identity.signature, 0x50524C56U);
    EXPECT_EQ(keys().registered.front().identity.id, 1U);
}

TEST_F(HotKeyManagerTest, TheChosenPresetIsRegistered) {
    choose("cmd-shift-space");
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls.last(), QStringLiteral("register 49 768"));
}

TEST_F(HotKeyManagerTest, AnUnknownPresetRegistersOptionSpace) {
    choose("f13");
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls.last(), QStringLiteral("register 49 2048"));
}

TEST_F(HotKeyManagerTest, ASettingOfAnotherTypeRegistersOptionSpace) {
    store(Settings::hotkeyPreset, 4);
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls.last(), QStringLiteral("register 49 2048"));
}

TEST_F(HotKeyManagerTest, BothEdgesReachTheCallbacks) {
    manager->applyCurrentPreset();
    keys().press();
    EXPECT_EQ(downs, 1);
    EXPECT_EQ(ups, 0);
    keys().release();
    EXPECT_EQ(downs, 1);
    EXPECT_EQ(ups, 1);
}

TEST_F(HotKeyManagerTest, EdgesWithoutACallbackAreIgnored) {
    manager->onKeyDown = nullptr;
    manager->onKeyUp = nullptr;
    manager->applyCurrentPreset();
    keys().press();
    keys().release();
    EXPECT_EQ(downs + ups, 0);
}

TEST_F(HotKeyManagerTest, AnotherPresetTakesThePlaceOfThePresentOne) {
    manager->applyCurrentPreset();
    choose("opt-backtick");
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls, QStringList({QStringLiteral("install"), QStringLiteral("register 49 2048"),
                                         QStringLiteral("unregister"), QStringLiteral("register 50 2048")}));
    EXPECT_EQ(keys().registered.size(), 1U);
}

TEST_F(HotKeyManagerTest, TheSamePresetAgainIsRegisteredAnewAndWorks) {
    manager->applyCurrentPreset();
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls, QStringList({QStringLiteral("install"), QStringLiteral("register 49 2048"),
                                         QStringLiteral("unregister"), QStringLiteral("register 49 2048")}));
    keys().press();
    EXPECT_EQ(downs, 1);
}

TEST_F(HotKeyManagerTest, ARefusalIsLoggedWithTheSystemsNumberAndLeavesNoHotKey) {
    manager->applyCurrentPreset();
    keys().refuseWith = -9878;
    choose("ctrl-opt-space");
    manager->applyCurrentPreset();
    EXPECT_TRUE(keys().registered.empty());
    EXPECT_EQ(keys().calls.last(), QStringLiteral("register 49 6144"));  // and no other is tried
    EXPECT_EQ(logged(), QStringList(QStringLiteral("registrazione hotkey fallita (status -9878) — "
                                                   "probabilmente già in uso da un'altra app")));
}

TEST_F(HotKeyManagerTest, ThePresetAfterARefusedOneWorks) {
    keys().refuseWith = 10;
    manager->applyCurrentPreset();
    keys().refuseWith = 0;
    choose("opt-backtick");
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls, QStringList({QStringLiteral("install"), QStringLiteral("register 49 2048"),
                                         QStringLiteral("register 50 2048")}));
    keys().press();
    EXPECT_EQ(downs, 1);
}

TEST_F(HotKeyManagerTest, AnAcceptedRegistrationIsNotLogged) {
    manager->applyCurrentPreset();
    EXPECT_TRUE(logged().isEmpty());
}

TEST_F(HotKeyManagerTest, ItsEndUnregistersTheKeyAndThenTheHandler) {
    manager->applyCurrentPreset();
    manager.reset();
    EXPECT_EQ(keys().calls.mid(2), QStringList({QStringLiteral("unregister"), QStringLiteral("remove")}));
}

TEST_F(HotKeyManagerTest, AHotKeyThatIsLostLaterIsReportedLikeARefusedOne) {
    manager->applyCurrentPreset();
    keys().changed(HotKeyRefusal{10});
    EXPECT_EQ(logged(), QStringList(QStringLiteral("registrazione hotkey fallita (status 10) — "
                                                   "probabilmente già in uso da un'altra app")));
    EXPECT_EQ(manager->refusal(), HotKeyRefusal{10});
    keys().changed(std::nullopt);
    EXPECT_EQ(manager->refusal(), std::nullopt);
    EXPECT_EQ(outcomes, Outcomes({std::nullopt, HotKeyRefusal{10}, std::nullopt}));
    EXPECT_EQ(logged().size(), 1);
}

TEST_F(HotKeyManagerTest, EveryRegistrationTellsItsOutcome) {
    keys().refuseWith = 10;
    manager->applyCurrentPreset();
    EXPECT_EQ(manager->refusal(), HotKeyRefusal{10});
    manager->applyCurrentPreset();
    keys().refuseWith = 0;
    manager->applyCurrentPreset();
    EXPECT_EQ(manager->refusal(), std::nullopt);
    EXPECT_EQ(outcomes, Outcomes({HotKeyRefusal{10}, HotKeyRefusal{10}, std::nullopt}));
}

TEST_F(HotKeyManagerTest, WhereOnlyPresetsGoAnOwnCombinationCountsAsTheFirst) {
    HotKeyChoice::store(101, HotKeyModifier::control);
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls.last(), QStringLiteral("register 49 2048"));
}

TEST_F(HotKeyManagerTest, WhereRefusalsAreRareNoOtherPresetIsTriedAndNothingIsTold) {
    keys().refuseWith = -9878;
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls.size(), 2);
    EXPECT_FALSE(stored(Settings::hotkeyPreset).isValid());
    EXPECT_FALSE(HotKeyStatus::shared().warning());
    EXPECT_FALSE(keys().mayBeFree);
}

}  // namespace
}  // namespace parlivo
