// SPDX-License-Identifier: MIT
#include "platform/linux/kde/KdeKeys.h"
#include "platform/linux/sway/SwayBinding.h"
#include "platform/linux/sway/SwayConfiguration.h"

#include <QtCore/qnamespace.h>

#include <gtest/gtest.h>

#include <optional>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;
namespace Mod = HotKeyModifier;

constexpr KeyCode keyE = 0x0E;
constexpr KeyCode keyF9 = 0x65;
constexpr KeyCode digitBlock5 = 0x57;
constexpr KeyCode pause = VirtualKey::firstKernelCode + 119;
constexpr KeyCode unknown = 200;

TEST(SwayBindingTest, AnyKeyIsBoundByItsPosition) {
    EXPECT_EQ(sway::bindingOf(VirtualKey::space, Mod::option)->chord, "Mod1+65");
    EXPECT_EQ(sway::bindingOf(keyF9, 0)->chord, "75");
    EXPECT_EQ(sway::bindingOf(keyE, Mod::control | Mod::shift | Mod::command)->chord, "Ctrl+Shift+Mod4+26");
    EXPECT_EQ(sway::bindingOf(pause, 0)->chord, "127");
    EXPECT_FALSE(sway::bindingOf(unknown, Mod::option));
}

int code(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    return QKeyCombination(modifiers, key).toCombined();
}

bool isBound(const QString& configuration) {
    return sway::configurationBinds(configuration,
                                    {.modifiers = Mod::option, .code = 65, .symbol = u"space"_s});
}

TEST(SwayConfigurationTest, FindsACombinationHoweverItIsWritten) {
    for (const auto* line :
         {"bindsym Mod1+space exec menu", "  bindsym  --no-warn --locked   Alt+Space  exec menu",
          "bindcode Mod1+65 exec menu", "bindsym --to-code space+mod1 exec menu",
          "set $mod Mod1\nset $modkey Mod4\nbindsym $mod+space focus mode_toggle",
          "bindsym {\n  Mod4+d exec menu\n  Mod1+space exec menu\n}", "bindsym \\\n  Mod1+space exec menu",
          "mode \"resize\" {\n bindsym Left x\n}\nbindsym Mod1+space exec menu"})
        EXPECT_TRUE(isBound(QString::fromLatin1(line))) << line;
}

TEST(SwayConfigurationTest, OtherCombinationsAndModesAreNoneOfIt) {
    for (const auto* line :
         {"", "# bindsym Mod1+space exec menu", "bindsym Mod4+space exec menu",
          "bindsym Mod1+Shift+space exec menu", "bindsym Mod1+spaces exec menu", "bindcode Mod1+66 exec menu",
          "bindsym Mod1+65 exec menu", "bindcode Mod1+space exec menu", "set $x Mod1+space", "bindsym",
          "bindsym --release", "mode \"a\" {\n bindsym Mod1+space exec menu\n}", "}\n}\nbindsym Mod4+x y",
          "bar {\n bindsym Mod1+space x\n}", "bindsym Mod1+space+a exec menu",
          "set $mod Mod1\nset $modkey Mod4\nbindsym $modkey+space exec menu"})
        EXPECT_FALSE(isBound(QString::fromLatin1(line))) << line;
}

TEST(SwayConfigurationTest, AKeyWithoutASymbolIsKnownByItsPositionOnly) {
    EXPECT_FALSE(sway::configurationBinds(u"bindsym Mod1+ exec menu"_s,
                                          {.modifiers = Mod::option, .code = 65, .symbol = {}}));
    EXPECT_TRUE(sway::configurationBinds(u"bindcode Mod1+65 exec menu"_s,
                                         {.modifiers = Mod::option, .code = 65, .symbol = {}}));
}

TEST(KdeKeysTest, KeysAreQtsCodesOfWhatTheLayoutPrints) {
    EXPECT_EQ(kde::combinationOf(VirtualKey::space, Mod::option, U' '), code(Qt::Key_Space, Qt::AltModifier));
    EXPECT_EQ(kde::combinationOf(keyF9, 0, 0), code(Qt::Key_F9));
    EXPECT_EQ(kde::combinationOf(pause, 0, 0), code(Qt::Key_Pause));
    EXPECT_EQ(kde::combinationOf(keyE, Mod::control | Mod::shift, U'e'),
              code(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier));
    EXPECT_EQ(kde::combinationOf(0x21, Mod::command, U'è'), code(Qt::Key_Egrave, Qt::MetaModifier));
    EXPECT_EQ(kde::combinationOf(VirtualKey::grave, Mod::option, U'\\'),
              code(Qt::Key_Backslash, Qt::AltModifier));
    EXPECT_EQ(kde::combinationOf(VirtualKey::grave, Mod::option, 0),
              code(Qt::Key_QuoteLeft, Qt::AltModifier));
}

TEST(KdeKeysTest, WhatKdeHasNoNameForIsNone) {
    EXPECT_EQ(kde::combinationOf(unknown, Mod::option, 0), std::nullopt);
    EXPECT_EQ(kde::combinationOf(keyE, Mod::option, 0), std::nullopt) << "a layout that is not known";
    EXPECT_EQ(kde::combinationOf(digitBlock5, Mod::option, U'5'), std::nullopt)
        << "not the 5 above the letters";
    EXPECT_EQ(kde::combinationOf(0x12, Mod::option | Mod::shift, U'1'), std::nullopt)
        << "with Shift it is another character's key";
}

}  // namespace
}  // namespace parlivo
