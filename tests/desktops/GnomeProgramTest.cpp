// SPDX-License-Identifier: MIT
#include "desktops/GnomeProgramTest.h"

#include "desktop/wayland/WaylandReceiver.h"
#include "platform/linux/gnome/CustomBinding.h"

#include <linux/input-event-codes.h>

#include <csignal>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using Kind = WaylandReceiver::Kind;
using parlivo::gnome::CustomBinding;

const QString spoken = QStringLiteral("Perché no? «Sì» — 12 € 👍🏽");
const QString before = QStringLiteral("prima");

class GnomeDictation : public GnomeProgramTest, public testing::WithParamInterface<Kind> {
  protected:
    /// What the button in the settings does.
    static void bind() {
        CustomBinding binding(QStringLiteral("'%1/Contents/MacOS/Parlivo' --toggle").arg(builtBundle()));
        const int boundBefore = gnome::boundKeys();
        ASSERT_TRUE(binding.assign(QStringLiteral("<Control><Alt>space")));
        ASSERT_TRUE(waitFor([&] { return gnome::boundKeys() == boundBefore + 1; }));
    }
    void pressKey() {
        hands.press({KEY_LEFTCTRL, KEY_LEFTALT, KEY_SPACE});
        hands.release({KEY_SPACE, KEY_LEFTALT, KEY_LEFTCTRL});
    }
};

TEST_P(GnomeDictation, ByTheBoundKeyTheTextStandsInTheFocusedWindow) {
    StubRecogniser stub(spoken);
    bind();
    hands.copy(before);
    const WaylandReceiver receiver(GetParam());
    const Program program(builtBundle(), session());
    ASSERT_TRUE(program.waitUntilUp());
    // Whatever is chosen: nobody tells of the key's release.
    EXPECT_FALSE(home::settings().contains(QStringLiteral("dictationMode")));
    pressKey();
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording"))) << qPrintable(program.statusText());
    letPass(500ms);
    EXPECT_EQ(program.state(), QStringLiteral("recording")) << "the key is up, and it goes on";
    pressKey();
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
    ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));
    EXPECT_TRUE(waitFor([] { return gnome::remoteSessions() == 1; }));
    EXPECT_TRUE(waitFor([&] { return hands.clipboard() == before; }));
    const QString log = home::log();
    EXPECT_TRUE(log.contains(QStringLiteral("iniezione completata")));
    EXPECT_TRUE(log.contains(QStringLiteral(
        "sessione: Wayland: scorciatoia personalizzata di GNOME, incolla per mezzo di GNOME, nessun pannello")));
    EXPECT_FALSE(log.contains(spoken)) << "what was dictated";
}

INSTANTIATE_TEST_SUITE_P(All, GnomeDictation, testing::Values(Kind::Gtk3, Kind::Gtk4, Kind::Qt, Kind::Foot),
                         [](const auto& kind) { return nameOf(kind.param); });

TEST_F(GnomeProgramTest, AtFirstTheMenuSaysWhatIsMissing) {
    const Program program(builtBundle(), session());
    ASSERT_TRUE(program.waitUntilUp());
    EXPECT_TRUE(waitFor([&] {
        return program.statusText() ==
               QStringLiteral("⚠️ Ctrl+Alt+Spazio non è ancora attiva: va assegnata nelle impostazioni");
    })) << qPrintable(program.statusText());
    EXPECT_TRUE(waitFor([] {
        return home::settings().value(QStringLiteral("hotkeyPreset")).toString() ==
               QStringLiteral("ctrl-opt-space");
    })) << "Alt+Space is the window's menu";
    EXPECT_EQ(gnome::setting(QStringLiteral("org.gnome.settings-daemon.plugins.media-keys"),
                             QStringLiteral("custom-keybindings")),
              QStringLiteral("@as []"));
}

TEST_F(GnomeProgramTest, WithoutATextFieldTheTextGoesToTheClipboardAndThatIsSaid) {
    StubRecogniser stub(spoken);
    const Program program(builtBundle(), session());
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(program.invoke("Toggle"));
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
    letPass(500ms);
    ASSERT_TRUE(program.invoke("Toggle"));
    EXPECT_TRUE(waitFor([&] {
        return program.statusText().startsWith(
            QStringLiteral("⚠️ Testo negli appunti — la finestra attiva non lo ha preso"));
    })) << qPrintable(program.statusText());
    EXPECT_EQ(hands.clipboard(), spoken);
}

/// The window stands still, and the user ends the session that the orange sign tells of.
TEST_F(GnomeProgramTest, ASessionThatTheUserEndsLeavesTheTextOnTheClipboard) {
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(Kind::Gtk4);
    const Program program(builtBundle(), session());
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(program.invoke("Toggle"));
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
    letPass(500ms);
    receiver.freeze();
    ASSERT_TRUE(program.invoke("Toggle"));
    ASSERT_TRUE(waitFor([] { return gnome::remoteSessions() == 2; }));
    ASSERT_TRUE(waitFor(gnome::isSecretOnClipboard));
    gnome::endLastRemoteSession();
    EXPECT_TRUE(waitFor([&] {
        return program.statusText().startsWith(QStringLiteral("⚠️ Testo negli appunti"));
    })) << qPrintable(program.statusText());
    EXPECT_TRUE(waitFor([&] { return hands.clipboard() == spoken; }));
    receiver.thaw();
    EXPECT_TRUE(waitFor([] { return gnome::remoteSessions() == 1; }));
    EXPECT_TRUE(waitFor([&] { return hands.clipboard() == spoken; })) << "GNOME's own copy";
}

TEST_F(GnomeProgramTest, AKilledProgramLeavesNoSession) {
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(Kind::Gtk4);
    Program program(builtBundle(), session());
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(program.invoke("Toggle"));
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
    letPass(500ms);
    ASSERT_TRUE(program.invoke("Toggle"));
    ASSERT_TRUE(waitFor([] { return gnome::remoteSessions() == 2; }));
    program.signal(SIGKILL);
    EXPECT_TRUE(waitFor([] { return gnome::remoteSessions() == 1; }));
}

}  // namespace
}  // namespace parlivo::desktop
