// SPDX-License-Identifier: MIT
#include "desktop/wayland/WaylandReceiver.h"
#include "desktops/GnomeProgramTest.h"
#include "desktops/SessionService.h"

#include <QDir>
#include <QFile>

#include <linux/input-event-codes.h>

#include <csignal>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using Kind = WaylandReceiver::Kind;

const QString spoken = QStringLiteral("Perché no? «Sì» — 12 € 👍🏽");
const QString allowed = QStringLiteral("org.gnome.settings-daemon.global-shortcuts");
const QString program = QStringLiteral("it.parlivo.Parlivo");

/// The hot key by GNOME's portal, which the user has allowed.
class GnomePortalTest : public GnomeProgramTest {
  protected:
    GnomePortalTest() {
        install();
        // What is taken for the end of a hold is five times as long.
        gnome::changeSetting(QStringLiteral("org.gnome.desktop.peripherals.keyboard"),
                             QStringLiteral("repeat-interval"), QStringLiteral("150"));
    }

    /// The portal takes a program's word for its name if a desktop file of that name is there.
    static void install() {
        const QString folder = qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/applications");
        QDir().mkpath(folder);
        QFile file(folder + QLatin1Char('/') + program + QStringLiteral(".desktop"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\nName=Parlivo\nExec=/usr/bin/true\n");
    }
    /// What the desktop's dialog stores.
    static void allow(const QString& accelerator) {
        gnome::changeSetting(
            QStringLiteral("%1.application:/org/gnome/settings-daemon/global-shortcuts/%2/")
                .arg(allowed, program),
            QStringLiteral("shortcuts"),
            QStringLiteral("[('dictate', {'description': <'Detta tenendo premuto'>, 'shortcuts': <['%1']>})]")
                .arg(accelerator));
        gnome::changeSetting(allowed, QStringLiteral("applications"), QStringLiteral("['%1']").arg(program));
    }
    void waitUntilUp(const Program& running) {
        ASSERT_TRUE(running.waitUntilUp());
        ASSERT_TRUE(waitFor([] {
            return home::log().contains(
                QStringLiteral("sessione: Wayland: tasto globale del portale, incolla per mezzo di GNOME"));
        }));
    }
    /// Waits until the desktop has bound the key.
    void waitUntilBound(const Program& running) {
        ASSERT_NO_FATAL_FAILURE(waitUntilUp(running));
        ASSERT_TRUE(waitFor([this] { return gnome::boundKeys() == boundBefore_ + 1; }))
            << qPrintable(running.statusText());
    }
    void holdKey(const Program& running) {
        ASSERT_NO_FATAL_FAILURE(waitUntilBound(running));
        hands.press({KEY_LEFTCTRL, KEY_LEFTALT, KEY_D});
        ASSERT_TRUE(running.waitForState(QStringLiteral("recording"))) << qPrintable(running.statusText());
    }

    const int boundBefore_ = gnome::boundKeys();
};

TEST_F(GnomePortalTest, TheKeyIsHeldWhileOneSpeaks) {
    allow(QStringLiteral("<Control><Alt>d"));
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(Kind::Gtk4);
    const Program running(builtBundle(), session());
    ASSERT_NO_FATAL_FAILURE(holdKey(running));
    letPass(1500ms);
    EXPECT_EQ(running.state(), QStringLiteral("recording")) << "it is held";
    hands.release({KEY_D, KEY_LEFTALT, KEY_LEFTCTRL});
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
}

TEST_F(GnomePortalTest, TheModifierMayComeUpFirst) {
    allow(QStringLiteral("<Control><Alt>d"));
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(Kind::Gtk3);
    const Program running(builtBundle(), session());
    ASSERT_NO_FATAL_FAILURE(holdKey(running));
    letPass(1500ms);
    EXPECT_EQ(running.state(), QStringLiteral("recording")) << "it is held";
    hands.release({KEY_LEFTALT, KEY_LEFTCTRL, KEY_D});
    EXPECT_TRUE(waitFor([&] { return running.state() != QStringLiteral("recording"); }));
    EXPECT_TRUE(waitFor([&] { return stub.recordings() == 1; }));
}

TEST_F(GnomePortalTest, ASingleKeyWorks) {
    allow(QStringLiteral("F9"));
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(Kind::Gtk3);
    const Program running(builtBundle(), session());
    ASSERT_NO_FATAL_FAILURE(waitUntilBound(running));
    hands.press({KEY_F9});
    ASSERT_TRUE(running.waitForState(QStringLiteral("recording"))) << qPrintable(running.statusText());
    letPass(400ms);
    hands.release({KEY_F9});
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
}

/// Nobody tells of the release any more: that the key is silent does.
TEST_F(GnomePortalTest, APortalThatEndsEndsTheHoldAndTheNextOneGivesTheKeyAgain) {
    allow(QStringLiteral("<Control><Alt>d"));
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(Kind::Gtk4);
    const Program running(builtBundle(), session());
    ASSERT_NO_FATAL_FAILURE(holdKey(running));
    letPass(1s);
    gnome::SessionService portal(QStringLiteral("portal"));
    gnome::SessionService behind(QStringLiteral("portal-gnome"));
    portal.kill();
    hands.release({KEY_D, KEY_LEFTALT, KEY_LEFTCTRL});
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
    EXPECT_TRUE(running.waitForState(QStringLiteral("idle")));
    // What stands behind the portal may crash with it (GNOME 48 does), and is looked for when the portal
    // starts.
    const QString name = QStringLiteral("org.freedesktop.impl.portal.desktop.gnome");
    behind.kill();
    ASSERT_TRUE(waitFor([&] { return !gnome::isServed(name); }));
    behind.restart();
    ASSERT_TRUE(waitFor([&] { return gnome::isServed(name); }));
    portal.restart();
    // It may have been asked before all that stands behind it was there.
    ASSERT_TRUE(waitFor([this] { return gnome::boundKeys() == boundBefore_ + 1; }, 90s))
        << qPrintable(running.statusText());
    hands.press({KEY_LEFTCTRL, KEY_LEFTALT, KEY_D});
    ASSERT_TRUE(running.waitForState(QStringLiteral("recording"))) << qPrintable(running.statusText());
    letPass(500ms);
    hands.release({KEY_D, KEY_LEFTALT, KEY_LEFTCTRL});
    EXPECT_TRUE(receiver.waitForText(spoken + spoken)) << qPrintable(receiver.text());
}

TEST_F(GnomePortalTest, AKilledProgramLeavesNoKeyAndNoSession) {
    allow(QStringLiteral("<Control><Alt>d"));
    Program running(builtBundle(), session());
    ASSERT_NO_FATAL_FAILURE(waitUntilBound(running));
    running.signal(SIGKILL);
    EXPECT_TRUE(waitFor([&] { return gnome::boundKeys() == boundBefore_; }));
    EXPECT_EQ(gnome::remoteSessions(), 1);
}

TEST_F(GnomePortalTest, NobodyIsAskedBeforeTheButton) {
    const Program running(builtBundle(), session());
    ASSERT_NO_FATAL_FAILURE(waitUntilUp(running));
    EXPECT_TRUE(waitFor([&] {
        return running.statusText().contains(QStringLiteral("va assegnata nelle impostazioni"));
    })) << qPrintable(running.statusText());
    letPass(2s);
    EXPECT_EQ(gnome::boundKeys(), boundBefore_);
    EXPECT_EQ(gnome::setting(allowed, QStringLiteral("applications")), QStringLiteral("@as []"));
}

}  // namespace
}  // namespace parlivo::desktop
