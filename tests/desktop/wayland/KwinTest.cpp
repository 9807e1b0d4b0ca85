// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "desktop/wayland/Hands.h"
#include "desktop/wayland/Measured.h"
#include "desktop/wayland/WaylandEnvironment.h"
#include "desktop/wayland/WaylandReceiver.h"
#include "input/Injector.h"
#include "platform/linux/kde/KdeHotKeyService.h"
#include "platform/linux/wayland/DataControlPasteboard.h"
#include "platform/linux/wayland/SeatKeymap.h"
#include "platform/linux/wayland/WaylandKeyboard.h"
#include "support/Pipeline.h"
#include "support/PlatformTest.h"
#include "support/Text.h"

#include <QDBusInterface>
#include <QDBusReply>
#include <QFile>

#include <cerrno>
#include <csignal>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using Kind = WaylandReceiver::Kind;

constexpr HotKeyIdentity identity{.signature = 1, .id = 1};

/// The hot key of KDE, pressed by a user.
class KdeHotKeyTest : public testing::Test {
  protected:
    KdeHotKeyTest()
        : handler(service.installHandler([this] { edges += u'+'; }, [this] { edges += u'-'; },
                                         [](std::optional<HotKeyRefusal>) {})) {}

    void registerOption(KeyCode key) {
        auto result = service.registerHotKey(key, HotKeyModifier::option, identity);
        ASSERT_TRUE(std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(result));
        registration = std::get<std::unique_ptr<HotKeyRegistration>>(std::move(result));
    }
    bool edgesBecome(const QString& expected) {
        return waitFor([&] { return edges == expected; });
    }
    /// Whether KDE holds keys for us now.
    static bool isActive() {
        QDBusInterface component(QStringLiteral("org.kde.kglobalaccel"),
                                 QStringLiteral("/component/it_parlivo_Parlivo"),
                                 QStringLiteral("org.kde.kglobalaccel.Component"));
        return QDBusReply<bool>(component.call(QStringLiteral("isActive"))).value();
    }

    Hands hands;
    QString edges;
    kde::KdeHotKeyService service;
    std::unique_ptr<HotKeyHandler> handler;
    std::unique_ptr<HotKeyRegistration> registration;
};

TEST_F(KdeHotKeyTest, TellsBothEdgesOfAHold) {
    registerOption(VirtualKey::space);
    hands.press({KEY_LEFTALT, KEY_SPACE});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    letPass(1s);  // keys repeat by then
    EXPECT_EQ(edges, QStringLiteral("+"));
    hands.release({KEY_SPACE, KEY_LEFTALT});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-"))) << qPrintable(edges);
}

TEST_F(KdeHotKeyTest, TheModifierMayComeUpFirst) {
    registerOption(VirtualKey::space);
    hands.press({KEY_LEFTALT, KEY_SPACE});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    hands.release({KEY_LEFTALT, KEY_SPACE});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-"))) << qPrintable(edges);
}

TEST_F(KdeHotKeyTest, NothingIsHeldAfterTheRegistration) {
    registerOption(VirtualKey::space);
    EXPECT_TRUE(isActive());
    registration.reset();
    EXPECT_FALSE(isActive());
    registerOption(VirtualKey::space);
    EXPECT_TRUE(isActive());
    hands.press({KEY_LEFTALT, KEY_SPACE});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    hands.release({KEY_SPACE, KEY_LEFTALT});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-"))) << qPrintable(edges);
}

TEST_F(KdeHotKeyTest, AKeyThatKdeUsesIsRefused) {
    // Alt and the key left of "1" walk through the windows of a program.
    const auto result = service.registerHotKey(VirtualKey::grave, HotKeyModifier::option, identity);
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(result));
    EXPECT_EQ(std::get<HotKeyRefusal>(result).status, EBUSY);
}

TEST_F(KdeHotKeyTest, AnyCombinationOfTheLayoutWorks) {
    kde::KdeHotKeyService named(wayland::SeatKeymap::open());
    const auto own =
        named.installHandler([this] { edges += u'+'; }, [this] { edges += u'-'; }, [](const auto&) {});
    // The seat has a keyboard once a key was pressed.
    hands.tap(KEY_LEFTSHIFT);
    ASSERT_TRUE(waitFor([&] { return named.keyLabel(*named.keyCodeOf(KEY_E + 8)) == QStringLiteral("E"); }));
    auto result = named.registerHotKey(*named.keyCodeOf(KEY_E + 8),
                                       HotKeyModifier::control | HotKeyModifier::option, identity);
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(result));
    hands.press({KEY_LEFTCTRL, KEY_LEFTALT, KEY_E});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    hands.release({KEY_E, KEY_LEFTALT, KEY_LEFTCTRL});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-"))) << qPrintable(edges);
}

TEST_F(KdeHotKeyTest, ATrialOfAnotherCombinationLeavesTheHotKeyAlone) {
    constexpr HotKeyIdentity trial{.signature = 1, .id = 2};
    registerOption(VirtualKey::space);
    auto free = service.registerHotKey(*service.keyCodeOf(KEY_F9 + 8), 0, trial);
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(free));
    std::get<std::unique_ptr<HotKeyRegistration>>(free).reset();
    const auto taken = service.registerHotKey(VirtualKey::grave, HotKeyModifier::option, trial);
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(taken));
    EXPECT_EQ(std::get<HotKeyRefusal>(taken).reason, HotKeyRefusal::Reason::Taken);
    const auto unusable = service.registerHotKey(0x7fff, HotKeyModifier::option, trial);
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(unusable));
    EXPECT_EQ(std::get<HotKeyRefusal>(unusable).reason, HotKeyRefusal::Reason::Unusable);
    hands.press({KEY_LEFTALT, KEY_SPACE});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    hands.release({KEY_SPACE, KEY_LEFTALT});
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-"))) << qPrintable(edges);
    QDBusInterface component(QStringLiteral("org.kde.kglobalaccel"),
                             QStringLiteral("/component/it_parlivo_Parlivo"),
                             QStringLiteral("org.kde.kglobalaccel.Component"));
    QDBusReply<QStringList> listed;
    EXPECT_TRUE(waitFor([&] {
        listed = component.call(QStringLiteral("shortcutNames"));
        return !listed.value().contains(QStringLiteral("trial"));
    })) << qPrintable(listed.value().join(u' '));
}

class EveryKwinReceiver : public PlatformTest, public testing::WithParamInterface<Kind> {};

TEST_P(EveryKwinReceiver, PastesTenThousandCharacters) {
    const Hands hands;
    const auto connection = wayland::WaylandConnection::open();
    wayland::WaylandKeyboard keyboard(nullptr, std::make_unique<wayland::FakeInput>(*connection));
    const auto pasteboard = wayland::DataControlPasteboard::open();
    ASSERT_TRUE(pasteboard);
    platform.keyboard().real = &keyboard;
    platform.pasteboard().real = pasteboard.get();
    const WaylandReceiver receiver(GetParam());
    const QString text =
        QStringLiteral("Perché “no”? 👨‍👩‍👧‍👦 漢字 שלום\n").repeated(400);
    Pipeline pipeline;
    auto outcome = Injector::Outcome::CutOff;
    const auto begin = Clock::now();
    ASSERT_TRUE(pipeline.run([&] { outcome = Injector::paste(text); }));
    EXPECT_EQ(outcome, Injector::Outcome::Delivered);
    EXPECT_TRUE(receiver.waitForText(text)) << qPrintable(receiver.text());
    tellMeasured(GetParam(), "paste", Text::countCharacters(text), Clock::now() - begin);
}

INSTANTIATE_TEST_SUITE_P(All, EveryKwinReceiver, testing::Values(Kind::Gtk3, Kind::Gtk4, Kind::Qt),
                         [](const auto& kind) { return nameOf(kind.param); });

/// Ends KWin as a crash does, and starts it again with the same command.
void restartKwin() {
    const QString desktop = qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/desktop/");
    QFile pid(desktop + QStringLiteral("kwin.pid"));
    ASSERT_TRUE(pid.open(QIODevice::ReadOnly));
    const auto process = static_cast<pid_t>(pid.readAll().trimmed().toInt());
    const auto wordsOf = [&](const char* file) {
        QFile words(QStringLiteral("/proc/%1/%2").arg(process).arg(QLatin1String(file)));
        EXPECT_TRUE(words.open(QIODevice::ReadOnly));
        QStringList list;
        for (const QByteArray& word : words.readAll().split('\0'))
            if (!word.isEmpty()) list.append(QString::fromLocal8Bit(word));
        return list;
    };
    const QStringList command = wordsOf("cmdline");
    const QStringList variables = wordsOf("environ");
    ASSERT_EQ(kill(process, SIGKILL), 0);
    ASSERT_TRUE(waitFor([] { return !wayland::WaylandConnection::open(); }));
    static ProcessGroup kwin;  // ends with the test
    kwin.start(QStringLiteral("env"), QStringList{QStringLiteral("-i")} + variables + command);
    ASSERT_TRUE(
        waitFor([] { return wayland::WaylandConnection::open() && kde::KdeHotKeyService::isOffered(); }));
}

/// A toolkit that outlives its compositor, as Qt does where the session asks for it (Plasma 6); here because
/// its windows are on the X server.
TEST(KwinRestartTest, ADictationGoesOnInTheNewCompositor) {
    const QString spoken = QStringLiteral("Perché no? «Sì» — 12 €");
    separateSpeakerFromMicrophone();
    home::settle();
    StubRecogniser stub(spoken);
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PARLIVO_PLATFORM"), QStringLiteral("wayland"));
    const Program program(builtBundle(), environment);
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(program.invoke("Toggle"));
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
    restartKwin();
    Hands hands;
    const WaylandReceiver receiver(Kind::Gtk3);
    EXPECT_EQ(program.state(), QStringLiteral("recording"));
    ASSERT_TRUE(program.invoke("Toggle"));
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text()) << qPrintable(home::log());
    ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));
    hands.press({KEY_LEFTALT, KEY_SPACE});
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording"))) << qPrintable(program.statusText());
    letPass(400ms);
    hands.release({KEY_SPACE, KEY_LEFTALT});
    EXPECT_TRUE(receiver.waitForText(spoken + spoken)) << qPrintable(receiver.text());
}

class KwinDictation : public testing::TestWithParam<Kind> {};

/// The windows have menu bars, and see nothing of the hot key but its Alt, which goes down and up.
TEST_P(KwinDictation, TheTextStandsInTheFocusedWindow) {
    const QString spoken = QStringLiteral("Perché no? «Sì» — 12 € 👍🏽");
    separateSpeakerFromMicrophone();
    home::settle({{QStringLiteral("cleanupLevel"), QStringLiteral("none")}});
    home::provideModels();
    Hands hands;
    StubRecogniser stub(spoken);
    const WaylandReceiver receiver(GetParam());
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    hands.press({KEY_LEFTALT, KEY_SPACE});
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording"))) << qPrintable(home::log());
    letPass(400ms);
    hands.release({KEY_SPACE, KEY_LEFTALT});
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text()) << qPrintable(home::log());
    EXPECT_TRUE(home::log().contains(
        QStringLiteral("sessione: Wayland: tasto globale di KDE, incolla da tastiera virtuale, pannello")))
        << qPrintable(home::log());
}

INSTANTIATE_TEST_SUITE_P(All, KwinDictation, testing::Values(Kind::Gtk3, Kind::Qt),
                         [](const auto& kind) { return nameOf(kind.param); });

}  // namespace
}  // namespace parlivo::desktop
