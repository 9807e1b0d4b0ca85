// SPDX-License-Identifier: MIT
#include "desktop/wayland/WaylandReceiver.h"
#include "desktops/GnomeProgramTest.h"
#include "desktops/SessionService.h"

#include <memory>
#include <vector>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using Kind = WaylandReceiver::Kind;

const QString spoken = QStringLiteral("Perché no? «Sì» — 12 € 👍🏽");

/// The shell ends in the midst of a dictation, and with it its X server and every window. `run` gives these
/// tests a process that has no window itself.
class GnomeShellEnd : public testing::Test {
  protected:
    GnomeShellEnd() {
        separateSpeakerFromMicrophone();
        home::settle({{QStringLiteral("cleanupLevel"), QStringLiteral("none")}});
        home::provideModels();
        // In the order of their start: all but the first are windows of the shell, or talk to it.
        for (const auto* name : {"gnome", "media-keys", "shortcuts", "portal-gnome", "portal"}) {
            if (gnome::SessionService::exists(QString::fromLatin1(name)))
                services_.push_back(std::make_unique<gnome::SessionService>(QString::fromLatin1(name)));
        }
    }
    void TearDown() override {
        if (HasFailure()) std::cerr << qPrintable(home::log());
    }

    void killShell() { services_.front()->kill(); }
    /// As a user who logs in again has it.
    void beginSessionAgain() {
        for (std::size_t i = 1; i < services_.size(); ++i) services_[i]->kill();
        services_.front()->restart();
        ASSERT_TRUE(gnome::waitForShell());
        for (std::size_t i = 1; i < services_.size(); ++i) services_[i]->restart();
    }
    static QProcessEnvironment session() {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        environment.insert(
            QStringLiteral("DISPLAY"),
            gnome::inShell(QStringLiteral("imports.gi.GLib.getenv('DISPLAY')")).remove(QLatin1Char('"')));
        environment.insert(
            QStringLiteral("XAUTHORITY"),
            gnome::inShell(QStringLiteral("imports.gi.GLib.getenv('XAUTHORITY')")).remove(QLatin1Char('"')));
        return environment;
    }
    static void expectDictation() {
        const gnome::Hands hands;
        StubRecogniser stub(spoken);
        const WaylandReceiver receiver(Kind::Gtk4);
        const Program program(builtBundle(), session());
        ASSERT_TRUE(program.waitUntilUp());
        EXPECT_EQ(home::recordings(), QStringList()) << "of the program before it";
        ASSERT_TRUE(program.invoke("Toggle"));
        ASSERT_TRUE(program.waitForState(QStringLiteral("recording"))) << qPrintable(program.statusText());
        letPass(500ms);
        ASSERT_TRUE(program.invoke("Toggle"));
        EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
        EXPECT_TRUE(waitFor([] { return gnome::remoteSessions() == 1; }));
    }

  private:
    std::vector<std::unique_ptr<gnome::SessionService>> services_;
};

TEST_F(GnomeShellEnd, WhileItRecordsTheProgramEndsAndTheNextOneWorks) {
    auto hands = std::make_unique<gnome::Hands>();
    Program program(builtBundle(), session());
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(program.invoke("Toggle"));
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording"))) << qPrintable(program.statusText());
    letPass(500ms);
    killShell();
    EXPECT_EQ(program.waitForExit(), 1) << "it crashes, or stays: " << qPrintable(program.errors());
    EXPECT_TRUE(waitFor([] { return recordingStreams().isEmpty(); })) << "the microphone stays open";
    hands.reset();
    beginSessionAgain();
    expectDictation();
}

}  // namespace
}  // namespace parlivo::desktop
