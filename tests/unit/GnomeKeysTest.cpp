// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/Accelerator.h"
#include "platform/linux/gnome/DesktopSettings.h"

#include <gtest/gtest.h>

namespace parlivo::gnome {
namespace {

using namespace HotKeyModifier;

constexpr KeyCode f9 = 0x65;
constexpr KeyCode letterQ = 0x0c;
constexpr KeyCode noKey = 0x7fff;

TEST(AcceleratorTest, PresetsAndFunctionKeysHaveNames) {
    EXPECT_EQ(acceleratorOf(VirtualKey::space, option), QStringLiteral("<Alt>space"));
    EXPECT_EQ(acceleratorOf(VirtualKey::space, control | option), QStringLiteral("<Control><Alt>space"));
    EXPECT_EQ(acceleratorOf(VirtualKey::space, command | shift), QStringLiteral("<Shift><Super>space"));
    EXPECT_EQ(acceleratorOf(f9, 0), QStringLiteral("F9"));
}

TEST(AcceleratorTest, WhatALayoutPrintsGoesByItsPosition) {
    EXPECT_EQ(acceleratorOf(VirtualKey::grave, option), QStringLiteral("<Alt>0x31"));
    EXPECT_EQ(acceleratorOf(letterQ, control), QStringLiteral("<Control>0x18"));
    EXPECT_EQ(acceleratorOf(noKey, option), std::nullopt);
}

TEST(AcceleratorTest, ThePortalHasASpellingOfItsOwn) {
    EXPECT_EQ(triggerOf(VirtualKey::space, control | option), QStringLiteral("CTRL+ALT+space"));
    EXPECT_EQ(triggerOf(VirtualKey::grave, command | shift), QStringLiteral("SHIFT+LOGO+grave"));
    EXPECT_EQ(triggerOf(f9, 0), QStringLiteral("F9"));
    EXPECT_EQ(triggerOf(noKey, option), std::nullopt);
}

struct Spelling {
    const char* accelerator;
    KeyCode key;
    HotKeyModifiers modifiers;
};

TEST(AcceleratorTest, EverySpellingIsRecognised) {
    for (const auto& [accelerator, key, modifiers] :
         {Spelling{"<Alt>space", VirtualKey::space, option},
          {"<alt>Space", VirtualKey::space, option},
          {"<Mod1>space", VirtualKey::space, option},
          {"<Alt>0x41", VirtualKey::space, option},
          {"<Primary><Alt>space", VirtualKey::space, control | option},
          {"<Ctrl><Alt>space", VirtualKey::space, control | option},
          {"<Alt><Control>space", VirtualKey::space, control | option},
          {"<Shift><Super>space", VirtualKey::space, command | shift},
          {"<Mod4><Shft>space", VirtualKey::space, command | shift},
          {"<Alt>Above_Tab", VirtualKey::grave, option},
          {"<Alt>grave", VirtualKey::grave, option},
          {"F9", f9, 0},
          {"<Super>q", letterQ, command},
          {"<Super>Q", letterQ, command}}) {
        EXPECT_TRUE(isAccelerator(QString::fromLatin1(accelerator), key, modifiers)) << accelerator;
    }
}

TEST(AcceleratorTest, OthersAreNot) {
    for (const char* other : {"", "space", "<Alt>", "<Alt", "<Alt>Tab", "<Control>space", "<Alt><Shift>space",
                              "<Hyper>space", "<Alt>0x", "disabled", "<Alt>0x31"}) {
        EXPECT_FALSE(isAccelerator(QString::fromLatin1(other), VirtualKey::space, option)) << other;
    }
    EXPECT_FALSE(isAccelerator(QStringLiteral("<Alt>space"), noKey, option));
}

TEST(DesktopSettingsTest, StringsAreFoundInAValuesText) {
    EXPECT_EQ(DesktopSettings::stringsIn(QStringLiteral("['<Alt>space', '<Super>s']")),
              QStringList({QStringLiteral("<Alt>space"), QStringLiteral("<Super>s")}));
    EXPECT_EQ(
        DesktopSettings::stringsIn(QStringLiteral("org.gnome.desktop.wm.keybindings close ['<Alt>F4']")),
        QStringList(QStringLiteral("<Alt>F4")));
    EXPECT_TRUE(DesktopSettings::stringsIn(QStringLiteral("@as []")).isEmpty());
    EXPECT_TRUE(DesktopSettings::stringsIn(QString()).isEmpty());
    EXPECT_EQ(DesktopSettings::stringsIn(QStringLiteral("\"it's\"")), QStringList(QStringLiteral("it's")));
    EXPECT_EQ(DesktopSettings::stringsIn(QStringLiteral("['cut off")),
              QStringList(QStringLiteral("cut off")));
}

TEST(DesktopSettingsTest, WhatIsWrittenIsRead) {
    const QStringList strings{QStringLiteral("plain"), QStringLiteral("it's"), QStringLiteral("\"x\""),
                              QStringLiteral("back\\slash"), QString()};
    EXPECT_EQ(DesktopSettings::stringsIn(DesktopSettings::text(strings)), strings);
    EXPECT_TRUE(DesktopSettings::stringsIn(DesktopSettings::text(QStringList())).isEmpty());
}

}  // namespace
}  // namespace parlivo::gnome
