// SPDX-License-Identifier: MIT
#include "desktops/GnomeShell.h"
#include "platform/linux/gnome/BoundHotKeyService.h"
#include "platform/linux/gnome/CustomBinding.h"
#include "support/Waiting.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <cerrno>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using parlivo::gnome::BoundHotKeyService;
using parlivo::gnome::CustomBinding;

constexpr HotKeyIdentity identity{.signature = 1, .id = 1};
constexpr HotKeyIdentity trial{.signature = 1, .id = 2};

const QString mediaKeys = QStringLiteral("org.gnome.settings-daemon.plugins.media-keys");
const QString list = QStringLiteral("custom-keybindings");
const QString own =
    QStringLiteral("/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/parlivo/");
const QString others =
    QStringLiteral("/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/altra/");
const QString ownEntry = mediaKeys + QStringLiteral(".custom-keybinding:") + own;

/// The entry in GNOME's list, with a command that leaves a trace.
class GnomeBindingTest : public testing::Test {
  protected:
    bool isPressedBy(std::initializer_list<std::uint32_t> keys) {
        // The shell takes a new entry to heart when the daemon has told it.
        return waitFor(
            [&] {
                hands.press(keys);
                hands.release(keys);
                letPass(200ms);
                return QFile::exists(trace);
            },
            60s);
    }

    gnome::Hands hands;
    QTemporaryDir folder;
    const QString trace = folder.filePath(QStringLiteral("trace"));
    CustomBinding binding{QStringLiteral("touch '%1'").arg(trace)};
};

TEST_F(GnomeBindingTest, RunsItsCommandUntilItIsRemoved) {
    EXPECT_FALSE(binding.exists());
    const int before = gnome::boundKeys();
    ASSERT_TRUE(binding.assign(QStringLiteral("<Control><Alt>space")));
    EXPECT_TRUE(isPressedBy({KEY_LEFTCTRL, KEY_LEFTALT, KEY_SPACE}));
    binding.remove();
    EXPECT_FALSE(binding.exists());
    EXPECT_EQ(gnome::setting(mediaKeys, list), QStringLiteral("@as []"));
    EXPECT_EQ(gnome::setting(ownEntry, QStringLiteral("binding")), QStringLiteral("''"));
    EXPECT_EQ(gnome::setting(ownEntry, QStringLiteral("command")), QStringLiteral("''"));
    EXPECT_TRUE(waitFor([&] { return gnome::boundKeys() == before; }));
    letPass(1s);  // for what was started by the last press
    QFile::remove(trace);
    hands.press({KEY_LEFTCTRL, KEY_LEFTALT, KEY_SPACE});
    hands.release({KEY_SPACE, KEY_LEFTALT, KEY_LEFTCTRL});
    letPass(1s);
    EXPECT_FALSE(QFile::exists(trace));
}

TEST_F(GnomeBindingTest, APositionWorks) {
    ASSERT_TRUE(binding.assign(QStringLiteral("<Control>0x31")));
    EXPECT_TRUE(isPressedBy({KEY_LEFTCTRL, KEY_GRAVE}));
}

TEST_F(GnomeBindingTest, OtherEntriesStay) {
    gnome::changeSetting(mediaKeys, list, QStringLiteral("['%1']").arg(others));
    ASSERT_TRUE(binding.assign(QStringLiteral("F9")));
    EXPECT_EQ(gnome::setting(mediaKeys, list), QStringLiteral("['%1', '%2']").arg(others, own));
    binding.remove();
    EXPECT_EQ(gnome::setting(mediaKeys, list), QStringLiteral("['%1']").arg(others));
}

TEST_F(GnomeBindingTest, KnowsWhatIsHeld) {
    using namespace HotKeyModifier;
    EXPECT_TRUE(binding.isHeld(VirtualKey::space, option)) << "the window's menu";
    EXPECT_TRUE(binding.isHeld(VirtualKey::grave, option)) << "a program's windows";
    EXPECT_TRUE(binding.isHeld(VirtualKey::space, command | shift)) << "the layouts";
    EXPECT_FALSE(binding.isHeld(VirtualKey::space, control | option));
    gnome::changeSetting(mediaKeys, list, QStringLiteral("['%1']").arg(others));
    gnome::changeSetting(mediaKeys + QStringLiteral(".custom-keybinding:") + others,
                         QStringLiteral("binding"), QStringLiteral("'<Primary><Alt>space'"));
    binding.forget();
    EXPECT_TRUE(binding.isHeld(VirtualKey::space, control | option)) << "of the user's own";
}

/// The service, with hints that the user follows.
class GnomeHotKeyTest : public testing::Test {
  protected:
    GnomeHotKeyTest()
        : handler(service.installHandler(
              [] {}, [] {}, [this](std::optional<HotKeyRefusal> change) { told.push_back(change); })) {}

    std::optional<int> statusOf(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity as = identity) {
        const auto result = service.registerHotKey(key, modifiers, as);
        const auto* const refusal = std::get_if<HotKeyRefusal>(&result);
        return refusal ? std::optional(refusal->status) : std::nullopt;
    }
    /// Presses the button of the only hint.
    void follow() {
        const auto hints = service.hints();
        ASSERT_EQ(hints.size(), 1U);
        hints.front().action();
    }
    static QString bound() { return gnome::setting(ownEntry, QStringLiteral("binding")); }

    std::vector<std::optional<HotKeyRefusal>> told;
    BoundHotKeyService service{QDBusConnection::sessionBus()};
    std::unique_ptr<HotKeyHandler> handler;
};

TEST_F(GnomeHotKeyTest, IsMadeByTheButtonAndNotBefore) {
    EXPECT_TRUE(BoundHotKeyService::isOffered(QDBusConnection::sessionBus()));
    EXPECT_EQ(statusOf(VirtualKey::space, HotKeyModifier::option), EBUSY);
    EXPECT_TRUE(service.hints().empty()) << "a combination that cannot be had";
    EXPECT_EQ(statusOf(VirtualKey::space, HotKeyModifier::option | HotKeyModifier::control), EAGAIN);
    EXPECT_EQ(gnome::setting(mediaKeys, list), QStringLiteral("@as []"));
    follow();
    EXPECT_EQ(bound(), QStringLiteral("'<Control><Alt>space'"));
    EXPECT_TRUE(gnome::setting(ownEntry, QStringLiteral("command")).contains(QStringLiteral(" --toggle")));
    EXPECT_EQ(told, (std::vector<std::optional<HotKeyRefusal>>{std::nullopt}));
    follow();
    EXPECT_EQ(gnome::setting(mediaKeys, list), QStringLiteral("@as []"));
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told.back()->reason, HotKeyRefusal::Reason::NotSetUp);
}

TEST_F(GnomeHotKeyTest, FollowsTheChoiceOnceItIsMade) {
    EXPECT_EQ(statusOf(0x65, 0), EAGAIN);
    follow();
    EXPECT_EQ(bound(), QStringLiteral("'F9'"));
    EXPECT_EQ(statusOf(VirtualKey::space, HotKeyModifier::option | HotKeyModifier::control), std::nullopt);
    EXPECT_EQ(bound(), QStringLiteral("'<Control><Alt>space'"));
    EXPECT_EQ(statusOf(0x64, 0, trial), std::nullopt);
    EXPECT_EQ(statusOf(VirtualKey::grave, HotKeyModifier::option, trial), EBUSY);
    EXPECT_EQ(bound(), QStringLiteral("'<Control><Alt>space'")) << "a trial changes nothing";
    EXPECT_EQ(statusOf(VirtualKey::space, HotKeyModifier::option), EBUSY);
    EXPECT_EQ(bound(), QStringLiteral("''")) << "what was given up must not act";
}

TEST_F(GnomeHotKeyTest, WhatTheUserDoesInTheDesktopsSettingsIsNoticed) {
    EXPECT_EQ(statusOf(0x65, 0), EAGAIN);
    follow();
    told.clear();
    gnome::changeSetting(mediaKeys, list, QStringLiteral("[]"));
    EXPECT_TRUE(waitFor([&] { return told.size() == 1; }));
    EXPECT_EQ(told.back()->reason, HotKeyRefusal::Reason::NotSetUp);
    gnome::changeSetting(mediaKeys, list, QStringLiteral("['%1']").arg(own));
    EXPECT_TRUE(waitFor([&] { return told.size() == 2 && !told.back(); }));
}

TEST_F(GnomeHotKeyTest, AtTheStartTheEntryStaysAsTheUserChangedIt) {
    CustomBinding made(QStringLiteral("/old/place/Parlivo --toggle"));
    ASSERT_TRUE(made.assign(QStringLiteral("<Super>F9")));
    EXPECT_EQ(statusOf(0x65, 0), std::nullopt);
    EXPECT_EQ(bound(), QStringLiteral("'<Super>F9'"));
    EXPECT_FALSE(gnome::setting(ownEntry, QStringLiteral("command")).contains(QStringLiteral("/old/place")));
}

TEST_F(GnomeHotKeyTest, AKeyThatNoKeyboardHasIsRefused) {
    EXPECT_EQ(statusOf(0x7fff, HotKeyModifier::option), EINVAL);
}

}  // namespace
}  // namespace parlivo::desktop
