// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "desktop/hotkey/ShortcutsPortal.h"
#include "desktop/tray/NotifierWatcher.h"
#include "desktop/wayland/Hands.h"
#include "desktop/wayland/PortalSession.h"
#include "desktop/wayland/Sway.h"
#include "desktop/wayland/WaylandEnvironment.h"
#include "desktop/wayland/WaylandReceiver.h"

#include <algorithm>
#include <csignal>
#include <iostream>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using Kind = WaylandReceiver::Kind;

const QString onClipboard =
    QStringLiteral("⚠️ Testo negli appunti — la finestra attiva non lo ha preso: incollalo tu");
const QString ownWindows = QStringLiteral("it.parlivo.Parlivo");
const QString spoken = QStringLiteral("Perché no? «Sì» — 12 € 👍🏽");
const QString recogniserUrl = QStringLiteral("http://127.0.0.1:8765/");

/// The whole program in a session of sway, without an X server, controlled by the real key.
class WaylandSessionTest : public testing::Test {
  protected:
    WaylandSessionTest() {
        separateSpeakerFromMicrophone();
        settle();
    }
    void TearDown() override {
        if (HasFailure()) std::cerr << qPrintable(home::log());
    }

    static void settle(QJsonObject more = {}) {
        more.insert(QStringLiteral("cleanupLevel"), QStringLiteral("none"));
        home::settle(more);
        home::provideModels();
    }

    void press() { hands_.press({KEY_LEFTALT, KEY_SPACE}); }
    void release() { hands_.release({KEY_SPACE, KEY_LEFTALT}); }

    void startRecording(const Program& program) {
        press();
        ASSERT_TRUE(program.waitForState(QStringLiteral("recording"))) << qPrintable(program.statusText());
    }
    /// Holds the key for long enough to count.
    void dictate(const Program& program) {
        startRecording(program);
        letPass(400ms);
        release();
        ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));
    }

    Hands hands_;
};

/// How much of the screen is not of one colour where the card floats.
bool isCardShown() {
    const QImage place = sway::screenshot().copy((1280 - 240) / 2, 800 - 110 - 84, 240, 84);
    const QRgb corner = place.pixel(0, 0);
    return place.pixel(120, 10) != corner && place.pixel(20, 42) != corner;
}

/// All but the terminal have a menu bar. The window sees nothing of the hot key but its Alt, which goes down
/// and up.
class WaylandDictation : public WaylandSessionTest, public testing::WithParamInterface<Kind> {};

TEST_P(WaylandDictation, TheTextStandsInTheFocusedWindow) {
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(GetParam());
    sway::copy("prima");
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    const bool cardBefore = isCardShown();
    EXPECT_FALSE(cardBefore);
    startRecording(program);
    EXPECT_TRUE(waitFor(isCardShown));
    EXPECT_EQ(sway::focusedTitle(), receiver.title());
    letPass(400ms);  // shorter ones do not count
    release();
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
    ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));
    EXPECT_TRUE(waitFor([] { return !isCardShown(); }));
    EXPECT_TRUE(waitFor([] { return sway::clipboard() == "prima"; }));
    const QString log = home::log();
    EXPECT_TRUE(log.contains(QStringLiteral("iniezione completata")));
    EXPECT_TRUE(log.contains(QStringLiteral("permesso accessibilità: OK")));
    EXPECT_EQ(log.count(QStringLiteral("sessione: Wayland: tasto globale di sway, testo dal metodo di "
                                       "inserimento, incolla da tastiera virtuale, pannello")),
              1);
    EXPECT_FALSE(log.contains(spoken)) << "what was dictated";
}

INSTANTIATE_TEST_SUITE_P(All, WaylandDictation, testing::Values(Kind::Foot, Kind::Gtk3, Kind::Gtk4, Kind::Qt),
                         [](const auto& kind) { return nameOf(kind.param); });

TEST_F(WaylandSessionTest, TheRealEngineHearsAVoice) {
    settle({{QStringLiteral("typingSpeed"), QStringLiteral("fast")}});
    const WaylandReceiver receiver(Kind::Gtk4);
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(Program::waitUntilServed(recogniserUrl));
    const auto& all = demo::phrases();
    const auto phrase = std::ranges::find(all, QStringLiteral("s04"), &demo::Phrase::id);
    const Voice voice(*phrase);
    startRecording(program);
    voice.speak();
    release();
    EXPECT_TRUE(waitFor([&] { return receiver.text() == QStringLiteral("Perché non vieni con noi?"); },
                        engineTimeout))
        << qPrintable(receiver.text());
}

TEST_F(WaylandSessionTest, WithoutATextFieldTheTextGoesToTheClipboardAndThatIsSaid) {
    StubRecogniser stub(spoken);
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    dictate(program);
    EXPECT_TRUE(waitFor([&] { return program.statusText() == onClipboard; }))
        << qPrintable(program.statusText());
    EXPECT_EQ(sway::clipboard(), spoken.toUtf8());
    EXPECT_EQ(sway::clipboard({QStringLiteral("--primary")}), spoken.toUtf8());
    EXPECT_FALSE(home::log().contains(QStringLiteral("iniezione completata")));
}

TEST_F(WaylandSessionTest, TheMenuSaysThatTypingWorks) {
    const NotifierWatcher panel;
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(waitFor([&] { return !panel.items().isEmpty(); }));
    const NotifierItem item(panel.bus(), panel.items().value(0));
    const auto saysSo = [&] {
        for (const MenuLine& line : item.menu())
            if (line.label == QStringLiteral("Accessibilità: ✅")) return true;
        return false;
    };
    EXPECT_TRUE(waitFor(saysSo));
}

TEST_F(WaylandSessionTest, NothingIsLeftBoundAtTheEnd) {
    Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());

    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_FALSE(sway::accepts(QStringLiteral("unbindcode Mod1+65")));
    EXPECT_FALSE(sway::accepts(QStringLiteral("unbindcode --release Mod1+65")));
}

TEST_F(WaylandSessionTest, AKilledProgramLeavesNothingThatTheNextStartDoesNotMend) {
    StubRecogniser stub(spoken);
    {
        Program killed(builtBundle(), waylandEnvironment());
        ASSERT_TRUE(killed.waitUntilUp());
        startRecording(killed);
        killed.signal(SIGKILL);
        EXPECT_EQ(killed.waitForExit(), std::nullopt);
        release();
    }
    EXPECT_TRUE(waitFor([] { return !isCardShown(); }));
    // Another key than the killed program had.
    settle({{QStringLiteral("hotkeyPreset"), QStringLiteral("ctrl-opt-space")}});
    const WaylandReceiver receiver(Kind::Gtk3);
    const Program next(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(next.waitUntilUp());
    EXPECT_FALSE(sway::accepts(QStringLiteral("unbindcode Mod1+65")));
    hands_.press({KEY_LEFTCTRL, KEY_LEFTALT, KEY_SPACE});
    ASSERT_TRUE(next.waitForState(QStringLiteral("recording")));
    letPass(400ms);
    hands_.release({KEY_SPACE, KEY_LEFTALT, KEY_LEFTCTRL});
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
}

TEST_F(WaylandSessionTest, InToggleModeOnePressStartsAndTheNextStops) {
    settle({{QStringLiteral("dictationMode"), QStringLiteral("toggle")}});
    StubRecogniser stub(spoken);
    // Its menu bar would open at each tap of Alt.
    const WaylandReceiver receiver(Kind::Qt);
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    startRecording(program);
    release();
    letPass(400ms);
    EXPECT_EQ(program.state(), QStringLiteral("recording"));
    press();
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
    release();
}

TEST_F(WaylandSessionTest, AnUnpluggedScreenTakesNothingAway) {
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(Kind::Gtk3);
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    startRecording(program);
    EXPECT_TRUE(waitFor(isCardShown));
    sway::command(QStringLiteral("output HEADLESS-1 disable"));
    letPass(400ms);
    EXPECT_EQ(program.state(), QStringLiteral("recording"));
    sway::command(QStringLiteral("output HEADLESS-1 enable"));
    receiver.focus();
    release();
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
    ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));
    // The next one has its card again.
    startRecording(program);
    EXPECT_TRUE(waitFor(isCardShown));
    letPass(400ms);
    release();
    EXPECT_TRUE(receiver.waitForText(spoken + spoken)) << qPrintable(receiver.text());
}

TEST_F(WaylandSessionTest, WithoutAScreenTheTextIsNotLost) {
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(Kind::Gtk3);
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    startRecording(program);
    sway::command(QStringLiteral("output HEADLESS-1 disable"));
    letPass(400ms);
    release();
    ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));
    // sway may keep the focus of a window that nobody sees.
    EXPECT_TRUE(waitFor([&] {
        const bool told = program.statusText() == onClipboard && sway::clipboard() == spoken.toUtf8();
        return receiver.text() == spoken || told;
    })) << qPrintable(program.statusText())
        << qPrintable(receiver.text());
}

TEST_F(WaylandSessionTest, BehindALockedScreenTheTextGoesToTheClipboardAndThatIsSaid) {
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(Kind::Gtk3);
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    startRecording(program);
    // It returns when the screen is locked, and ends with the compositor.
    ASSERT_EQ(QProcess::execute(QStringLiteral("swaylock"), {QStringLiteral("--daemonize")}), 0);
    letPass(400ms);
    release();
    ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));
    EXPECT_TRUE(waitFor([&] { return program.statusText() == onClipboard; }))
        << qPrintable(program.statusText());
    EXPECT_EQ(receiver.text(), QString());
    EXPECT_EQ(sway::clipboard(), spoken.toUtf8());
}

TEST_F(WaylandSessionTest, TheFocusMayChangeWhileTheUserSpeaksAndWhileTheTextComes) {
    const QString longText = (spoken + u' ').repeated(20).trimmed();
    settle({{QStringLiteral("typingSpeed"), QStringLiteral("natural")}});
    StubRecogniser stub(longText);
    const WaylandReceiver first(Kind::Gtk3);
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    startRecording(program);
    letPass(400ms);
    const WaylandReceiver second(Kind::Gtk4);
    release();
    ASSERT_TRUE(waitFor([&] { return !second.text().isEmpty(); }));
    first.focus();
    ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));
    EXPECT_TRUE(waitFor([&] { return second.text() + first.text() == longText; }))
        << qPrintable(second.text()) << "\n---\n"
        << qPrintable(first.text());
}

TEST_F(WaylandSessionTest, ADictationThatEndsWithItsCompositorIsToldOfAtTheNextStart) {
    const QString lost = QStringLiteral("la dettatura precedente non è arrivata alla fine");
    {
        Program program(builtBundle(), waylandEnvironment());
        ASSERT_TRUE(program.waitUntilUp());
        startRecording(program);
        // A recording too short to be one is not missed by anybody, should the key be let go with sway's end.
        letPass(400ms);
        sway::kill();
        program.waitForExit();
        EXPECT_FALSE(program.isRunning());
    }
    // The next session, in which sway may as well not be started again.
    auto next = QProcessEnvironment::systemEnvironment();
    next.remove(QStringLiteral("WAYLAND_DISPLAY"));
    next.remove(QStringLiteral("SWAYSOCK"));
    for (int start = 0; start < 2; ++start) {
        Program program(builtBundle(), next);
        ASSERT_TRUE(program.waitUntilUp());
        EXPECT_TRUE(waitFor([&] { return home::log().contains(lost); }));
        EXPECT_TRUE(home::recordings().isEmpty());
        program.signal(SIGTERM);
        EXPECT_EQ(program.waitForExit(), 0);
    }
    EXPECT_EQ(home::log().count(lost), 1) << "told once";
}

TEST_F(WaylandSessionTest, APortalThatHangsIsNotWaitedFor) {
    const PortalSession portals;
    ShortcutsPortal portal({.hangs = true});
    const Program program(builtBundle(), portals.within(waylandEnvironment()));
    ASSERT_TRUE(program.waitUntilUp());
    EXPECT_TRUE(portal.isAsked());
    EXPECT_EQ(program.state(), QStringLiteral("idle"));
    EXPECT_TRUE(program.statusText().contains(QStringLiteral("va assegnata nelle impostazioni")))
        << qPrintable(program.statusText());
    // It has not been given up: it serves once it answers.
    portal.wakeUp();
    EXPECT_TRUE(waitFor([&] { return portal.program() == ownWindows; }));
    EXPECT_TRUE(home::log().contains(QStringLiteral("sessione: Wayland: tasto globale del portale")));
    EXPECT_FALSE(home::log().contains(QStringLiteral("nessun tasto globale")));
}

TEST_F(WaylandSessionTest, WithoutAPortalForItTheLogTellsTheWayThatIsLeft) {
    const PortalSession portals;
    ShortcutsPortal portal({.knowsProgram = false});
    const Program program(builtBundle(), portals.within(waylandEnvironment()));
    ASSERT_TRUE(program.waitUntilUp());
    EXPECT_TRUE(waitFor(
        [] { return home::log().contains(QStringLiteral("sessione: Wayland: nessun tasto globale")); }));
}

TEST_F(WaylandSessionTest, TheWindowsWork) {
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    EXPECT_FALSE(sway::applications().contains(ownWindows));
    ASSERT_TRUE(program.invoke("ShowSettings"));
    EXPECT_TRUE(waitFor([] { return sway::applications().contains(ownWindows); }));
    EXPECT_TRUE(waitFor([] { return sway::focusedApplication() == ownWindows; }));
}

TEST_F(WaylandSessionTest, TheVariableOverridesTheChoice) {
    auto environment = waylandEnvironment();
    environment.insert(QStringLiteral("PARLIVO_PLATFORM"), QStringLiteral("x11"));
    Program x11(builtBundle(), environment);
    EXPECT_EQ(x11.waitForExit(), 1);
    EXPECT_TRUE(x11.errors().contains(QStringLiteral("serve una sessione grafica X11 (variabile DISPLAY)")));

    environment.insert(QStringLiteral("PARLIVO_PLATFORM"), QStringLiteral("none"));
    Program none(builtBundle(), environment);
    EXPECT_EQ(none.waitForExit(), 1);
    EXPECT_TRUE(none.errors().contains(QStringLiteral("PARLIVO_PLATFORM=none")));

    environment.insert(QStringLiteral("PARLIVO_PLATFORM"), QStringLiteral("mir"));
    Program unknown(builtBundle(), environment);
    EXPECT_EQ(unknown.waitForExit(), 1);
    EXPECT_TRUE(unknown.errors().contains(QStringLiteral("PARLIVO_PLATFORM=mir: valore sconosciuto")));
}

}  // namespace
}  // namespace parlivo::desktop
