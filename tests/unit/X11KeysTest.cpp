// SPDX-License-Identifier: MIT
#include "platform/linux/x11/KeyMap.h"
#include "platform/linux/x11/KeyPool.h"
#include "platform/linux/x11/KeySymbols.h"
#include "platform/linux/x11/LayoutMap.h"

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace parlivo::x11 {
namespace {

using Symbols = std::vector<KeySymbol>;

constexpr Modifiers shift = 1 << 0;
constexpr Modifiers capsLock = 1 << 1;
constexpr Modifiers numLock = 1 << 4;
constexpr Modifiers levelThree = 1 << 7;

namespace Type {
constexpr std::uint8_t oneLevel = 0;
constexpr std::uint8_t twoLevel = 1;
constexpr std::uint8_t alphabetic = 2;
constexpr std::uint8_t keypad = 3;
constexpr std::uint8_t fourLevel = 4;
}  // namespace Type

std::vector<KeyType> types() {
    return {
        {0, {}},
        {shift, {{shift, 1}}},
        {shift | capsLock, {{shift, 1}, {capsLock, 1}}},
        {shift | numLock, {{shift, 1}, {numLock, 1}}},
        {shift | levelThree, {{shift, 1}, {levelThree, 2}, {shift | levelThree, 3}}},
    };
}

KeyEntry oneGroup(std::uint8_t type, Symbols symbols) {
    return {{type, 0, 0, 0}, 1, static_cast<std::uint8_t>(symbols.size()), std::move(symbols)};
}

/// Keys from code 10 on.
KeyMap mapOf(std::vector<KeyEntry> keys, std::vector<Modifiers> modifiers = {}) {
    modifiers.resize(keys.size());
    return {10, std::move(keys), types(), std::move(modifiers)};
}

KeyMap spareKeys(std::size_t count) {
    return mapOf(std::vector<KeyEntry>(count));
}

/// The keyboard after it was given what the pool plans.
KeyMap applied(KeyMap map, const KeyPool& pool) {
    for (const auto& [code, pair] : pool.occupied()) map.setEntry(code, KeyPool::entry(pair));
    return map;
}

TEST(KeySymbolsTest, LineEndsAndTabsAreKeysOthersAreThemselves) {
    EXPECT_EQ(keySymbols(u"aè\n\r\t€"), (Symbols{XKB_KEY_a, XKB_KEY_egrave, XKB_KEY_Return, XKB_KEY_Return,
                                                 XKB_KEY_Tab, XKB_KEY_EuroSign}));
}

TEST(KeySymbolsTest, ACarriageReturnLineFeedPairIsOneReturn) {
    EXPECT_EQ(keySymbols(u"\r\n"), Symbols{XKB_KEY_Return});
    EXPECT_EQ(keySymbols(u"\n\r\n"), (Symbols{XKB_KEY_Return, XKB_KEY_Return}));
}

TEST(KeySymbolsTest, ControlCharactersNeverBecomeKeys) {
    for (char16_t c = 0; c < 0x20; ++c) {
        if (c == u'\n' || c == u'\r' || c == u'\t') continue;
        EXPECT_TRUE(keySymbols(QStringView(&c, 1)).empty()) << int{c};
    }
    for (char16_t c = 0x7f; c < 0xa0; ++c) EXPECT_TRUE(keySymbols(QStringView(&c, 1)).empty()) << int{c};
}

TEST(KeySymbolsTest, AnEmojiGivesAllItsCodePoints) {
    EXPECT_EQ(keySymbols(u"🧑🏿‍💻"), (Symbols{0x0101f9d1, 0x0101f3ff, 0x0100200d, 0x0101f4bb}));
}

TEST(KeySymbolsTest, BothKeysymsOfACharacterAreEqual) {
    EXPECT_EQ(canonical(0x01000000 | u'è'), KeySymbol{XKB_KEY_egrave});
    EXPECT_EQ(canonical(XKB_KEY_egrave), KeySymbol{XKB_KEY_egrave});
    EXPECT_EQ(canonical(XKB_KEY_Return), KeySymbol{XKB_KEY_Return});
    EXPECT_EQ(canonical(XKB_KEY_KP_1), KeySymbol{XKB_KEY_KP_1}) << "the keypad is not the digits' row";
    EXPECT_EQ(canonical(XKB_KEY_dead_grave), KeySymbol{XKB_KEY_dead_grave});
}

TEST(KeyMapTest, ModifiersChooseTheLevelThatTheTypeSays) {
    const KeyMap map =
        mapOf({oneGroup(Type::fourLevel, {XKB_KEY_e, XKB_KEY_E, XKB_KEY_EuroSign, XKB_KEY_cent})});
    EXPECT_EQ(map.symbol(10, 0, 0), KeySymbol{XKB_KEY_e});
    EXPECT_EQ(map.symbol(10, 0, shift | capsLock), KeySymbol{XKB_KEY_E});
    EXPECT_EQ(map.symbol(10, 0, levelThree), KeySymbol{XKB_KEY_EuroSign});
}

TEST(KeyMapTest, AGroupThatAKeyLacksIsWrappedClampedOrRedirected) {
    KeyEntry key{{Type::oneLevel, Type::oneLevel, 0, 0}, 2, 1, {XKB_KEY_a, XKB_KEY_b}};
    const auto symbolInGroup = [&key](std::uint8_t group) { return mapOf({key}).symbol(10, group, 0); };
    EXPECT_EQ(symbolInGroup(1), KeySymbol{XKB_KEY_b});
    EXPECT_EQ(symbolInGroup(2), KeySymbol{XKB_KEY_a}) << "wrapped";
    key.groupInfo = 2 | 0x40;
    EXPECT_EQ(symbolInGroup(2), KeySymbol{XKB_KEY_b}) << "clamped";
    key.groupInfo = 2 | 0x80 | 0x10;
    EXPECT_EQ(symbolInGroup(3), KeySymbol{XKB_KEY_b}) << "redirected to the second";
    key.groupInfo = 2 | 0x80 | 0x30;
    EXPECT_EQ(symbolInGroup(3), KeySymbol{XKB_KEY_a}) << "redirected to one that is not there";
}

TEST(KeyMapTest, SpareIsAKeyWithoutSymbolsAndModifiers) {
    const KeyMap map = mapOf({{}, oneGroup(Type::oneLevel, {0}), oneGroup(Type::oneLevel, {XKB_KEY_a}), {}},
                             {0, 0, 0, shift});
    EXPECT_TRUE(map.isSpare(10));
    EXPECT_TRUE(map.isSpare(11));
    EXPECT_FALSE(map.isSpare(12));
    EXPECT_FALSE(map.isSpare(13));
}

TEST(LayoutMapTest, FindsPlainAndShiftedCharactersInTheGroupInForce) {
    const KeyEntry key{{Type::alphabetic, Type::twoLevel, 0, 0},
                       2,
                       2,
                       {XKB_KEY_a, XKB_KEY_A, XKB_KEY_ograve, XKB_KEY_ccedilla}};
    const LayoutMap first(mapOf({key}), {0, 0}, {});
    EXPECT_EQ(first.find(XKB_KEY_A), (KeyStroke{10, true}));
    EXPECT_FALSE(first.find(XKB_KEY_ograve));
    const LayoutMap second(mapOf({key}), {1, 0}, {});
    EXPECT_EQ(second.find(XKB_KEY_ograve), (KeyStroke{10, false}));
    EXPECT_EQ(second.find(XKB_KEY_ccedilla), (KeyStroke{10, true}));
}

TEST(LayoutMapTest, LeavesThirdLevelsOut) {
    const KeyMap map =
        mapOf({oneGroup(Type::fourLevel, {XKB_KEY_e, XKB_KEY_E, XKB_KEY_EuroSign, XKB_KEY_cent})});
    EXPECT_FALSE(LayoutMap(map, {}, {}).find(XKB_KEY_EuroSign));
}

TEST(LayoutMapTest, NumLockInvertsTheLevelOfKeypadKeys) {
    const KeyMap map = mapOf({oneGroup(Type::keypad, {XKB_KEY_Insert, XKB_KEY_period})});
    EXPECT_EQ(LayoutMap(map, {0, 0}, {}).find(XKB_KEY_period), (KeyStroke{10, true}));
    EXPECT_EQ(LayoutMap(map, {0, numLock}, {}).find(XKB_KEY_period), (KeyStroke{10, false}));
}

TEST(LayoutMapTest, OfSeveralKeysTheFirstIsTaken) {
    const KeyMap map = mapOf({oneGroup(Type::twoLevel, {XKB_KEY_9, XKB_KEY_parenleft}),
                              oneGroup(Type::oneLevel, {XKB_KEY_parenleft})});
    EXPECT_EQ(LayoutMap(map, {}, {}).find(XKB_KEY_parenleft), (KeyStroke{10, true}));
    EXPECT_EQ(LayoutMap(map, {}, {10}).find(XKB_KEY_parenleft), (KeyStroke{11, false}))
        << "key 10 is a spare key in use";
}

TEST(KeyPoolTest, PlainPlacesAreUsedBeforeShiftedOnes) {
    KeyPool pool;
    pool.reconcile(spareKeys(2));
    ASSERT_EQ(pool.capacity(), 4U);
    EXPECT_EQ(pool.assign({101, 102}), (std::set<xcb_keycode_t>{10, 11}));
    EXPECT_FALSE(pool.find(101)->shift);
    EXPECT_FALSE(pool.find(102)->shift);
    EXPECT_EQ(pool.assign({103}), (std::set<xcb_keycode_t>{10}));
    EXPECT_EQ(pool.find(103), (KeyStroke{10, true}));
}

TEST(KeyPoolTest, WhatIsThereAlreadyChangesNothing) {
    KeyPool pool;
    pool.reconcile(spareKeys(2));
    pool.assign({101, 102, 103});
    EXPECT_EQ(pool.assign({103, 101}), std::set<xcb_keycode_t>{});
}

TEST(KeyPoolTest, TheLeastRecentlyUsedIsReplaced) {
    KeyPool pool;
    pool.reconcile(spareKeys(2));
    pool.assign({101, 102});
    pool.assign({103, 104});
    pool.assign({101});
    EXPECT_EQ(pool.assign({105})->size(), 1U);
    EXPECT_FALSE(pool.find(102));
    EXPECT_TRUE(pool.find(101) && pool.find(103) && pool.find(104) && pool.find(105));
}

TEST(KeyPoolTest, OfOneCallTheLastIsReplacedFirst) {
    KeyPool pool;
    pool.reconcile(spareKeys(1));
    pool.assign({101, 102});
    pool.assign({103});
    EXPECT_TRUE(pool.find(101));
    EXPECT_FALSE(pool.find(102));
}

TEST(KeyPoolTest, NoCharacterOfATextReplacesAnotherOfIt) {
    KeyPool pool;
    pool.reconcile(spareKeys(2));
    pool.assign({101, 102, 103, 104});
    pool.assign({104, 201, 202, 203});
    for (const KeySymbol symbol : {104U, 201U, 202U, 203U}) EXPECT_TRUE(pool.find(symbol)) << symbol;
    EXPECT_EQ(pool.occupied().size(), 2U);
}

TEST(KeyPoolTest, TooManyAtOnceAreRefusedAndChangeNothing) {
    KeyPool pool;
    pool.reconcile(spareKeys(1));
    pool.assign({101, 102});
    EXPECT_EQ(pool.assign({1, 2, 3}), std::nullopt);
    EXPECT_TRUE(pool.find(101) && pool.find(102));
    EXPECT_TRUE(pool.assign({1, 2, 1, 2, 1})) << "repeated ones count once";
    EXPECT_EQ(KeyPool().assign({1}), std::nullopt) << "a keyboard without spare keys";
    EXPECT_EQ(KeyPool().assign({}), std::set<xcb_keycode_t>{});
}

TEST(KeyPoolTest, KeepsWhatTheKeyboardStillHas) {
    KeyPool pool;
    const KeyMap map = spareKeys(3);
    pool.reconcile(map);
    pool.assign({101, 102, 103, 104});
    pool.reconcile(applied(map, pool));
    EXPECT_EQ(pool.assign({101, 102, 103, 104}), std::set<xcb_keycode_t>{});
}

TEST(KeyPoolTest, ForgetsWhatAnotherProgramTookAway) {
    KeyPool pool;
    const KeyMap map = spareKeys(2);
    pool.reconcile(map);
    pool.assign({101, 102});
    pool.reconcile(map);
    EXPECT_FALSE(pool.find(101));
    EXPECT_EQ(pool.capacity(), 4U) << "the keys are spare again";
}

TEST(KeyPoolTest, LeavesKeysThatAnotherProgramMadeUseOf) {
    KeyPool pool;
    KeyMap map = spareKeys(2);
    pool.reconcile(map);
    pool.assign({101, 102});
    map = applied(map, pool);
    map.setEntry(10, oneGroup(Type::twoLevel, {XKB_KEY_x, XKB_KEY_X}));
    pool.reconcile(map);
    EXPECT_EQ(pool.capacity(), 2U);
    EXPECT_FALSE(pool.find(101));
    EXPECT_TRUE(pool.find(102));
}

TEST(KeyPoolTest, TakesOverWhatAKilledRunLeftBehind) {
    KeyPool before;
    KeyMap map = spareKeys(2);
    before.reconcile(map);
    before.assign({101, 102, 103});
    map = applied(map, before);

    KeyPool unaware;
    unaware.reconcile(map);
    EXPECT_EQ(unaware.capacity(), 0U) << "such keys look like anybody's";

    KeyPool pool;
    for (const auto& [code, pair] : before.occupied()) pool.adopt(code, pair);
    pool.reconcile(map);
    EXPECT_EQ(pool.capacity(), 4U);
    EXPECT_EQ(pool.assign({101, 102, 103}), std::set<xcb_keycode_t>{});
}

TEST(KeyPoolTest, AStaleJournalIsIgnored) {
    KeyPool pool;
    pool.adopt(10, {101, 102});
    pool.adopt(200, {103, 104});
    pool.reconcile(mapOf({oneGroup(Type::oneLevel, {XKB_KEY_a})}));
    EXPECT_EQ(pool.capacity(), 0U);
    EXPECT_FALSE(pool.find(101));
}

TEST(KeyPoolTest, ASpareKeyFollowsShiftAloneInEveryLayout) {
    KeyMap map = spareKeys(1);
    map.setEntry(10, KeyPool::entry({XKB_KEY_egrave, XKB_KEY_Egrave}));
    for (std::uint8_t group = 0; group < 4; ++group) {
        EXPECT_EQ(map.symbol(10, group, capsLock | numLock), KeySymbol{XKB_KEY_egrave});
        EXPECT_EQ(map.symbol(10, group, capsLock | numLock | shift), KeySymbol{XKB_KEY_Egrave});
    }
}

}  // namespace
}  // namespace parlivo::x11
