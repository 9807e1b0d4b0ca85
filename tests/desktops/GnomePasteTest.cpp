// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "desktop/wayland/Measured.h"
#include "desktop/wayland/WaylandReceiver.h"
#include "desktops/GnomeShell.h"
#include "input/Injector.h"
#include "platform/linux/gnome/RemoteKeys.h"
#include "platform/linux/gnome/RemotePasteboard.h"
#include "platform/linux/wayland/WaylandKeyboard.h"
#include "support/Pipeline.h"
#include "support/PlatformTest.h"
#include "support/Text.h"

#include <linux/input-event-codes.h>

#include <iostream>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using Kind = WaylandReceiver::Kind;

const QString before = QStringLiteral("prima: «è» 👍🏽\n");

/// The adapters in a session of GNOME's, below the real rules of a paste.
class GnomePaste : public PlatformTest {
  protected:
    GnomePaste() {
        auto remote = std::make_shared<parlivo::gnome::RemoteDesktop>(QDBusConnection::sessionBus());
        keyboard.emplace(nullptr, std::make_unique<parlivo::gnome::RemoteKeys>(remote));
        pasteboard.emplace(remote);
        platform.keyboard().real = &*keyboard;
        platform.pasteboard().real = &*pasteboard;
        // A receiver on a machine that is busy with everything else asks late for what it pastes.
        Clock::setScale(4);
    }
    ~GnomePaste() override { Clock::setScale(1); }
    Injector::Outcome paste(const QString& text) {
        auto outcome = Injector::Outcome::CutOff;
        EXPECT_TRUE(pipeline.run([&] { outcome = Injector::paste(text); }));
        return outcome;
    }
    /// Nothing is left of a session but the test's own.
    static bool onlyHandsAreLeft() {
        return waitFor([] { return gnome::remoteSessions() == 1; });
    }

    gnome::Hands hands;
    std::optional<wayland::WaylandKeyboard> keyboard;
    std::optional<parlivo::gnome::RemotePasteboard> pasteboard;
    Pipeline pipeline;
};

TEST_F(GnomePaste, IsOfferedHere) {
    EXPECT_TRUE(parlivo::gnome::RemoteSession::isOffered(QDBusConnection::sessionBus()));
}

TEST_F(GnomePaste, WithoutATextFieldTheTextStaysOnTheClipboard) {
    EXPECT_EQ(paste(QStringLiteral("per nessuno")), Injector::Outcome::LeftOnClipboard);
    EXPECT_TRUE(onlyHandsAreLeft());
    EXPECT_EQ(hands.clipboard(), QStringLiteral("per nessuno"));
}

TEST_F(GnomePaste, AnotherProgramsCopyIsLeftAlone) {
    hands.copy(before);
    const WaylandReceiver receiver(Kind::Gtk3);
    EXPECT_EQ(paste(QStringLiteral("testo")), Injector::Outcome::Delivered);
    hands.copy(QStringLiteral("copiato intanto"));
    EXPECT_TRUE(onlyHandsAreLeft());
    EXPECT_EQ(hands.clipboard(), QStringLiteral("copiato intanto"));
}

class EveryGnomeReceiver : public GnomePaste, public testing::WithParamInterface<Kind> {};

TEST_P(EveryGnomeReceiver, PastesTenThousandCharactersAndPutsTheClipboardBack) {
    hands.copy(before);
    const WaylandReceiver receiver(GetParam(), [this] { hands.tap(KEY_LEFTSHIFT); });
    const QString text =
        QStringLiteral("Perché “no”? 👨‍👩‍👧‍👦 漢字 שלום\n").repeated(400);
    const auto begin = Clock::now();
    EXPECT_EQ(paste(text), Injector::Outcome::Delivered);
    EXPECT_TRUE(receiver.waitForText(text)) << qPrintable(receiver.text().left(200));
    // Without what the test's slow clock adds.
    const auto added = Clock::scaled(50ms) - 50ms;
    tellMeasured(GetParam(), "paste", Text::countCharacters(text), Clock::now() - begin - added);
    EXPECT_TRUE(onlyHandsAreLeft());
    EXPECT_TRUE(waitFor([this] { return hands.clipboard() == before; }));
}

/// It may still paste when it goes on, so the text must not have been replaced by then.
TEST_P(EveryGnomeReceiver, OneThatStandsStillLeavesTheTextOnTheClipboardAndLivesOn) {
    hands.copy(before);
    const WaylandReceiver receiver(GetParam(), [this] { hands.tap(KEY_LEFTSHIFT); });
    const QString text = QStringLiteral("Perché “no”? 👨‍👩‍👧‍👦\n").repeated(20);
    receiver.freeze();
    EXPECT_EQ(paste(text), Injector::Outcome::LeftOnClipboard);
    letPass(6s);
    EXPECT_TRUE(onlyHandsAreLeft());
    EXPECT_EQ(hands.clipboard(), text);
    receiver.thaw();
    // A terminal pastes from the X server's selection, and asks for that too late.
    if (GetParam() != Kind::Foot) {
        EXPECT_TRUE(receiver.waitForText(text)) << qPrintable(receiver.text());
    }
    EXPECT_EQ(hands.clipboard(), text);
}

INSTANTIATE_TEST_SUITE_P(All, EveryGnomeReceiver,
                         testing::Values(Kind::Foot, Kind::Gtk3, Kind::Gtk4, Kind::Qt, Kind::Chromium),
                         [](const auto& kind) { return nameOf(kind.param); });

}  // namespace
}  // namespace parlivo::desktop
