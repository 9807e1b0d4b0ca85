// SPDX-License-Identifier: MIT
#include "input/HotKeyChoice.h"
#include "input/HotKeyStatus.h"
#include "settings/Config.h"
#include "support/Waiting.h"
#include "unit/HotKeyManagerFixture.h"

#include <chrono>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

/// A system on which window managers hold combinations.
class ContendedHotKeyTest : public HotKeyManagerTest {
  protected:
    ContendedHotKeyTest() { keys().contended = HotKeyService::Contention::Common; }

    void take(const char* id) {
        const Preset preset = HotKeyManager::preset(QString::fromLatin1(id));
        keys().taken.insert({preset.keyCode, preset.modifiers});
    }
    void takeAll() {
        for (const Preset& preset : HotKeyManager::presets())
            keys().taken.insert({preset.keyCode, preset.modifiers});
    }
    QString chosen() { return stored(Settings::hotkeyPreset).toString(); }
    static std::optional<QString> warning() { return HotKeyStatus::shared().warning(); }
};

TEST_F(ContendedHotKeyTest, AUserWhoNeverChoseGetsTheFirstFreePresetStored) {
    take("opt-space");
    take("ctrl-opt-space");
    manager->applyCurrentPreset();
    EXPECT_EQ(chosen(), QStringLiteral("cmd-shift-space"));
    EXPECT_EQ(keys().calls.last(), QStringLiteral("register 49 768"));
    EXPECT_FALSE(warning());
    EXPECT_FALSE(manager->refusal());
    keys().press();
    EXPECT_EQ(downs, 1);
}

/// The system wants the user's consent first.
class UnsetHotKeyTest : public ContendedHotKeyTest {
  protected:
    UnsetHotKeyTest() {
        keys().refuseWith = 11;
        keys().refusalReason = HotKeyRefusal::Reason::NotSetUp;
    }
};

TEST_F(UnsetHotKeyTest, TheFirstThatCanBeHadIsChosenAndTheUserIsToldWhatIsMissing) {
    take("opt-space");
    manager->applyCurrentPreset();
    EXPECT_EQ(chosen(), QStringLiteral("ctrl-opt-space"));
    EXPECT_EQ(keys().calls.last(), QStringLiteral("register 49 6144")) << "and no other is tried";
    EXPECT_EQ(warning(), QStringLiteral("⌃⌥ Spazio non è ancora attiva: va assegnata nelle impostazioni"));
    EXPECT_EQ(logged(),
              QStringList({QStringLiteral("scorciatoia opt-space occupata, scelta ctrl-opt-space"),
                           QStringLiteral("la scorciatoia va ancora assegnata, nelle impostazioni")}));
}

TEST_F(UnsetHotKeyTest, NobodyWaitsForItByTheClock) {
    Clock::setScale(0.001);  // 10 s are 10 ms
    manager = std::make_unique<HotKeyManager>();
    manager->applyCurrentPreset();
    EXPECT_FALSE(keys().mayBeFree);
    const auto calls = keys().calls;
    desktop::letPass(50ms);
    EXPECT_EQ(keys().calls, calls);
}

TEST_F(UnsetHotKeyTest, OnceSetUpItWorks) {
    manager->applyCurrentPreset();
    ASSERT_TRUE(warning());
    keys().changed(std::nullopt);
    EXPECT_FALSE(warning());
    EXPECT_EQ(outcomes.back(), std::nullopt);
}

TEST_F(UnsetHotKeyTest, AnotherCombinationIsFree) {
    manager->applyCurrentPreset();
    using Verdict = HotKeyStatus::Verdict;
    EXPECT_EQ(HotKeyStatus::shared().verdictOn(VirtualKey::space, HotKeyModifier::option), Verdict::Free);
    EXPECT_EQ(HotKeyStatus::shared().verdictOn(VirtualKey::space, HotKeyModifier::command), Verdict::Free);
}

TEST_F(ContendedHotKeyTest, WithNothingTakenNothingIsStored) {
    manager->applyCurrentPreset();
    EXPECT_FALSE(stored(Settings::hotkeyPreset).isValid());
}

TEST_F(ContendedHotKeyTest, TheUsersOwnChoiceIsNeverChangedButItsRefusalIsTold) {
    take("opt-space");
    choose("opt-space");
    manager->applyCurrentPreset();
    EXPECT_EQ(chosen(), QStringLiteral("opt-space"));
    EXPECT_TRUE(keys().registered.empty());
    ASSERT_TRUE(warning());
    EXPECT_TRUE(warning()->startsWith(QStringLiteral("⌥ Spazio è già usata da un altro programma")))
        << warning()->toStdString();
}

TEST_F(ContendedHotKeyTest, WithNoneFreeTheRefusalIsToldAndNothingIsStored) {
    takeAll();
    manager->applyCurrentPreset();
    EXPECT_FALSE(stored(Settings::hotkeyPreset).isValid());
    EXPECT_TRUE(warning());
    EXPECT_TRUE(keys().mayBeFree);
}

TEST_F(ContendedHotKeyTest, AKeyThatBecomesFreeIsTakenWhenTheSystemSaysSo) {
    take("opt-backtick");
    choose("opt-backtick");
    manager->applyCurrentPreset();
    keys().mayBeFree();
    EXPECT_TRUE(warning()) << "still taken";
    EXPECT_EQ(logged().filter(QStringLiteral("registrazione hotkey fallita")).size(), 1)
        << "only the first refusal is logged";
    keys().taken.clear();
    keys().mayBeFree();
    EXPECT_FALSE(warning());
    keys().press();
    EXPECT_EQ(downs, 1);
    EXPECT_FALSE(keys().mayBeFree) << "nothing is watched once it works";
}

TEST_F(ContendedHotKeyTest, AKeyThatBecomesFreeWithoutAnEventIsTakenLater) {
    Clock::setScale(0.001);  // 10 s are 10 ms
    manager = std::make_unique<HotKeyManager>();
    manager->onKeyDown = [this] { ++downs; };
    take("opt-space");
    choose("opt-space");
    manager->applyCurrentPreset();
    keys().taken.clear();
    EXPECT_TRUE(desktop::waitFor([] { return !warning(); }));
    keys().press();
    EXPECT_EQ(downs, 1);
}

TEST_F(ContendedHotKeyTest, ByTheClockARefusedKeyIsOnlyAskedAfter) {
    Clock::setScale(0.001);  // 10 s are 10 ms
    takeAll();
    manager->applyCurrentPreset();
    const auto calls = keys().calls;
    EXPECT_TRUE(desktop::waitFor([&] { return keys().questions >= 3; }));
    EXPECT_EQ(keys().calls, calls) << "registering costs more than asking";
    EXPECT_TRUE(warning());
    const Preset third = HotKeyManager::presets()[2];
    keys().taken.erase({third.keyCode, third.modifiers});
    EXPECT_TRUE(desktop::waitFor([] { return !warning(); }));
    EXPECT_EQ(chosen(), third.id);
}

TEST_F(ContendedHotKeyTest, AUsersOwnChoiceIsTheOnlyOneAskedAfter) {
    Clock::setScale(0.001);  // 10 s are 10 ms
    take("opt-space");
    choose("opt-space");
    manager->applyCurrentPreset();
    const auto calls = keys().calls;
    EXPECT_TRUE(desktop::waitFor([&] { return keys().questions >= 3; }));
    EXPECT_EQ(keys().calls, calls) << "that the others are free does not matter";
}

TEST_F(ContendedHotKeyTest, WithTimeAFreedKeyIsLookedForLessOften) {
    EXPECT_LE(HotKeyManager::retryInterval(0), 10s);
    EXPECT_GE(HotKeyManager::retryInterval(0), 3s);
    EXPECT_GE(HotKeyManager::retryInterval(100), 30s);
}

TEST_F(ContendedHotKeyTest, AUserWhoLooksGetsAFreedKeyAtOnce) {
    take("opt-space");
    choose("opt-space");
    manager->applyCurrentPreset();
    HotKeyStatus::shared().look();
    EXPECT_TRUE(warning()) << "still taken";
    keys().taken.clear();
    HotKeyStatus::shared().look();
    EXPECT_FALSE(warning());
    const auto calls = keys().calls;
    HotKeyStatus::shared().look();
    EXPECT_EQ(keys().calls, calls) << "a key that works is left alone";
}

TEST_F(ContendedHotKeyTest, TheManagersEndEndsTheWatchAndTheWarning) {
    takeAll();
    manager->applyCurrentPreset();
    manager.reset();
    EXPECT_FALSE(warning());
    EXPECT_FALSE(keys().mayBeFree);
}

TEST_F(ContendedHotKeyTest, ACombinationOfTheUsersOwnIsRegistered) {
    HotKeyChoice::store(101, HotKeyModifier::control);  // F9
    EXPECT_EQ(chosen(), HotKeyChoice::ownId());
    manager->applyCurrentPreset();
    EXPECT_EQ(keys().calls.last(), QStringLiteral("register 101 4096"));
    EXPECT_EQ(HotKeyChoice::current().label, QStringLiteral("Ctrl+F9"));
}

TEST_F(ContendedHotKeyTest, AnOwnCombinationThatNobodyCouldHaveChosenCountsAsTheFirstPreset) {
    const auto registers = [this](qint64 code, qint64 modifiers) {
        store(Settings::hotkeyPreset, HotKeyChoice::ownId());
        store(Settings::hotkeyCode, code);
        store(Settings::hotkeyModifiers, modifiers);
        manager->applyCurrentPreset();
        return keys().calls.last();
    };
    const auto first = QStringLiteral("register 49 2048");
    EXPECT_EQ(registers(0, 0), first) << "A alone";
    EXPECT_EQ(registers(0, 0x0200), first) << "Shift+A types";
    EXPECT_EQ(registers(-1, 0x0800), first);
    EXPECT_EQ(registers(qint64{1} << 40, 0x0800), first);
    EXPECT_EQ(registers(0, 0x8000), first) << "no such modifier";
    EXPECT_EQ(registers(0, -1), first);
    EXPECT_EQ(registers(0, 0x0800), QStringLiteral("register 0 2048")) << "Alt+A";
    EXPECT_EQ(registers(122, 0), QStringLiteral("register 122 0")) << "F1 alone";
}

TEST_F(ContendedHotKeyTest, AVerdictTriesTheCombinationAndLeavesNothingBehind) {
    using Verdict = HotKeyStatus::Verdict;
    const auto& status = HotKeyStatus::shared();
    manager->applyCurrentPreset();
    const auto before = keys().registered.size();
    EXPECT_EQ(status.verdictOn(101, 0), Verdict::Free);
    keys().taken.insert({101, 0});
    EXPECT_EQ(status.verdictOn(101, 0), Verdict::Taken);
    EXPECT_EQ(status.verdictOn(0, 0), Verdict::Unusable) << "A alone";
    EXPECT_EQ(status.verdictOn(0, HotKeyModifier::shift), Verdict::Unusable);
    EXPECT_EQ(status.verdictOn(49, HotKeyModifier::option), Verdict::Free) << "the one in force";
    EXPECT_EQ(keys().registered.size(), before);
    keys().press();
    EXPECT_EQ(downs, 1);
}

}  // namespace
}  // namespace parlivo
