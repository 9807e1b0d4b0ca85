// SPDX-License-Identifier: MIT
#include "desktop/hotkey/ShortcutsPortal.h"
#include "platform/linux/gnome/GnomeHotKeys.h"
#include "platform/linux/portal/PortalHotKeyService.h"
#include "support/Clock.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <vector>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using portal::PortalHotKeyService;
using Answer = ShortcutsPortal::Answer;

constexpr HotKeyIdentity identity{.signature = 1, .id = 1};
constexpr HotKeyIdentity trial{.signature = 1, .id = 2};
constexpr KeyCode held = 7;     // a key that the desktop has itself
constexpr KeyCode nowhere = 8;  // a key that no keyboard has

class PortalHotKeyTest : public testing::Test {
  protected:
    void start(ShortcutsPortal::Behaviour behaviour = {}) {
        desktop.emplace(behaviour);
        service = std::make_unique<PortalHotKeyService>(
            portal::PortalDesktop{.trigger = trigger,
                                  .isHeld = [](KeyCode key, HotKeyModifiers) { return key == held; },
                                  .isAllowed = [this] { return allowed; },
                                  .repeat = {}},
            [this] { isUnavailable = true; });
        handler =
            service->installHandler([this] { edges += u'+'; }, [this] { edges += u'-'; },
                                    [this](std::optional<HotKeyRefusal> change) { told.push_back(change); });
    }
    static std::optional<QString> trigger(KeyCode key, HotKeyModifiers) {
        return key == nowhere ? std::nullopt : std::optional(QStringLiteral("CTRL+ALT+space"));
    }
    std::optional<int> statusOf(KeyCode key, HotKeyIdentity as = identity) {
        auto result = service->registerHotKey(key, HotKeyModifier::option, as);
        if (const auto* const refusal = std::get_if<HotKeyRefusal>(&result)) return refusal->status;
        return std::nullopt;
    }
    /// Presses the button of the only hint, and waits for what comes of it.
    void follow() {
        const auto hints = service->hints();
        ASSERT_EQ(hints.size(), 1U);
        ASSERT_TRUE(hints.front().action);
        const auto before = told.size();
        hints.front().action();
        EXPECT_TRUE(service->hints().empty()) << "asked once";
        EXPECT_TRUE(waitFor([&] { return told.size() > before; }));
    }
    bool edgesBecome(const QString& expected) {
        return waitFor([&] { return edges == expected; });
    }

    bool allowed = false;
    bool isUnavailable = false;
    QString edges;
    std::vector<std::optional<HotKeyRefusal>> told;
    std::optional<ShortcutsPortal> desktop;
    std::unique_ptr<PortalHotKeyService> service;
    std::unique_ptr<HotKeyHandler> handler;
};

TEST_F(PortalHotKeyTest, TheUserIsAskedByTheButtonOnly) {
    start();
    EXPECT_TRUE(waitFor([&] { return desktop->program() == QStringLiteral("it.parlivo.Parlivo"); }));
    EXPECT_EQ(statusOf(VirtualKey::space), EAGAIN);
    EXPECT_EQ(desktop->questions(), 0);
    follow();
    EXPECT_EQ(desktop->questions(), 1);
    EXPECT_EQ(desktop->trigger(), QStringLiteral("CTRL+ALT+space"));
    EXPECT_EQ(told.back(), std::nullopt);
    const auto hints = service->hints();
    ASSERT_EQ(hints.size(), 1U);
    EXPECT_TRUE(hints.front().text.contains(QStringLiteral("Premi CTRL+ALT+space")))
        << "what the desktop says";
    EXPECT_EQ(statusOf(VirtualKey::grave), std::nullopt);
    EXPECT_EQ(desktop->questions(), 1);
}

TEST_F(PortalHotKeyTest, WhoIsAllowedAlreadyIsBoundAtTheStart) {
    allowed = true;
    start();
    EXPECT_EQ(statusOf(VirtualKey::space), std::nullopt);
    EXPECT_TRUE(waitFor([&] { return desktop->questions() == 1; }));
    EXPECT_TRUE(waitFor([&] { return !told.empty() && !told.back(); }));
}

TEST_F(PortalHotKeyTest, AFailureThatBoundTheKeyIsNone) {
    start({.answer = Answer::BoundButFailed});
    statusOf(VirtualKey::space);
    follow();
    EXPECT_EQ(told.back(), std::nullopt);
}

TEST_F(PortalHotKeyTest, ADismissedQuestionCanBeAskedAgain) {
    start({.answer = Answer::Dismissed});
    statusOf(VirtualKey::space);
    follow();
    ASSERT_TRUE(told.back());
    EXPECT_EQ(told.back()->reason, HotKeyRefusal::Reason::NotSetUp);
    EXPECT_EQ(service->hints().front().lines, QStringLiteral("parlivo --toggle")) << "the other way";
    follow();
    EXPECT_EQ(desktop->questions(), 2);
}

TEST_F(PortalHotKeyTest, BothEdgesAreToldOnceWhateverIsRepeated) {
    start();
    statusOf(VirtualKey::space);
    follow();
    for (int i = 0; i < 3; ++i) desktop->tell("Activated");
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    desktop->tell("Deactivated");
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-")));
    desktop->tell("Deactivated");
    desktop->tell("Activated");
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-+"))) << qPrintable(edges);
}

TEST_F(PortalHotKeyTest, AReleaseThatIsNotToldFollowsFromTheSilence) {
    start();
    statusOf(VirtualKey::space);
    follow();
    desktop->tell("Activated");
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-"))) << qPrintable(edges);
    desktop->tell("Activated");
    desktop->tell("Activated");
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-+-"))) << qPrintable(edges);
}

TEST_F(PortalHotKeyTest, TheEndOfTheSessionEndsTheHoldAndIsTold) {
    start();
    statusOf(VirtualKey::space);
    follow();
    desktop->tell("Activated");
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    desktop->closeSession();
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-")));
    EXPECT_TRUE(waitFor([&] { return told.back().has_value(); }));
    follow();
    EXPECT_EQ(told.back(), std::nullopt);
}

TEST_F(PortalHotKeyTest, ANewPortalIsAskedAgain) {
    start();
    statusOf(VirtualKey::space);
    follow();
    told.clear();
    desktop.reset();
    desktop.emplace(ShortcutsPortal::Behaviour{});
    EXPECT_TRUE(waitFor([&] { return !told.empty() && !told.back(); }));
    EXPECT_EQ(desktop->program(), QStringLiteral("it.parlivo.Parlivo"));
    desktop->tell("Activated");
    EXPECT_TRUE(waitFor([&] { return edges.startsWith(u'+'); }));
}

/// With the pauses between questions cut short.
class LostPortalTest : public PortalHotKeyTest {
  protected:
    ~LostPortalTest() override { Clock::setScale(1); }
    void SetUp() override {
        start();
        statusOf(VirtualKey::space);
        follow();
        told.clear();
        Clock::setScale(0.02);
        desktop.reset();
    }
    bool isTold(bool works) {
        return waitFor([&] { return !told.empty() && told.back().has_value() != works; });
    }
};

TEST_F(LostPortalTest, OneThatFailsAtFirstIsAskedUntilItGivesTheKey) {
    desktop.emplace(ShortcutsPortal::Behaviour{.failures = 3});
    EXPECT_TRUE(isTold(true));
    EXPECT_EQ(desktop->questions(), 4);
    desktop->tell("Activated");
    EXPECT_TRUE(waitFor([&] { return edges.startsWith(u'+'); }));
}

TEST_F(LostPortalTest, OneThatAlwaysFailsIsAskedNoMoreUntilTheUserAsks) {
    constexpr int most = 7;
    desktop.emplace(ShortcutsPortal::Behaviour{.failures = most});
    EXPECT_TRUE(waitFor([&] { return desktop->questions() == most; }));
    EXPECT_TRUE(isTold(false));
    letPass(1s);
    EXPECT_EQ(desktop->questions(), most);
    follow();
    EXPECT_EQ(told.back(), std::nullopt);
}

TEST_F(LostPortalTest, AUserWhoSaysNoIsNotAskedAgain) {
    desktop.emplace(ShortcutsPortal::Behaviour{.answer = Answer::Dismissed});
    EXPECT_TRUE(isTold(false));
    letPass(1s);
    EXPECT_EQ(desktop->questions(), 1);
}

TEST_F(LostPortalTest, ThatItStaysAwayIsToldAndOneThatComesLateGivesTheKey) {
    EXPECT_TRUE(isTold(false));
    letPass(2s);
    desktop.emplace(ShortcutsPortal::Behaviour{});
    EXPECT_TRUE(isTold(true));
}

TEST_F(PortalHotKeyTest, APortalThatEndsWhileItIsAskedIsFollowedByTheNext) {
    start({.hangs = true});
    EXPECT_TRUE(waitFor([&] { return desktop->isAsked(); }));
    desktop->wakeUp();
    statusOf(VirtualKey::space);
    follow();
    desktop.reset();
    told.clear();
    desktop.emplace(ShortcutsPortal::Behaviour{.hangs = true});
    EXPECT_TRUE(waitFor([&] { return desktop->isAsked(); }));
    desktop.reset();
    desktop.emplace(ShortcutsPortal::Behaviour{});
    EXPECT_TRUE(waitFor([&] { return !told.empty() && !told.back(); }));
    letPass(200ms);
    EXPECT_EQ(told.back(), std::nullopt) << "the answer that never came counts no more";
    EXPECT_EQ(desktop->questions(), 1);
}

TEST_F(PortalHotKeyTest, WhatTheDesktopHasItselfIsRefusedAndATrialAsksNothing) {
    start();
    EXPECT_EQ(statusOf(VirtualKey::space), EAGAIN);
    EXPECT_EQ(statusOf(held, trial), EBUSY);
    EXPECT_EQ(statusOf(VirtualKey::grave, trial), std::nullopt);
    EXPECT_EQ(statusOf(nowhere), EINVAL);
    EXPECT_EQ(statusOf(held), EBUSY);
    EXPECT_TRUE(service->hints().empty()) << "a combination that cannot be had";
    EXPECT_EQ(desktop->questions(), 0);
}

/// The portal that a session has, asked by a program that it does not serve.
class RefusingPortalTest : public PortalHotKeyTest {
  protected:
    bool becomesUnavailable() {
        const auto alone = [this] {
            return std::make_unique<PortalHotKeyService>(portal::PortalDesktop{},
                                                         [this] { isUnavailable = true; });
        };
        service = alone();
        EXPECT_FALSE(isUnavailable) << "within the call";
        return waitFor([&] { return isUnavailable; });
    }
};

TEST_F(RefusingPortalTest, WithoutHotKeys) {
    desktop.emplace(ShortcutsPortal::Behaviour{.version = 0});
    EXPECT_TRUE(becomesUnavailable());
}

TEST_F(RefusingPortalTest, AProgramThatItDoesNotKnow) {
    desktop.emplace(ShortcutsPortal::Behaviour{.knowsProgram = false});
    EXPECT_TRUE(becomesUnavailable());
}

TEST_F(RefusingPortalTest, WithoutAPortal) {
    EXPECT_TRUE(becomesUnavailable());
}

TEST_F(PortalHotKeyTest, APortalThatHangsIsNotWaitedForAndServesOnceItAnswers) {
    start({.hangs = true});
    EXPECT_TRUE(waitFor([&] { return desktop->isAsked(); }));
    EXPECT_EQ(statusOf(VirtualKey::space), EAGAIN);
    const auto hints = service->hints();
    ASSERT_EQ(hints.size(), 1U);
    hints.front().action();
    EXPECT_TRUE(service->hints().empty()) << "the question waits";
    EXPECT_TRUE(told.empty());
    desktop->wakeUp();
    EXPECT_TRUE(waitFor([&] { return !told.empty() && !told.back(); }));
    EXPECT_EQ(desktop->trigger(), QStringLiteral("CTRL+ALT+space"));
    EXPECT_FALSE(isUnavailable);
}

TEST_F(PortalHotKeyTest, APortalThatNeverAnswersIsGivenUp) {
    Clock::setScale(0.01);
    start({.hangs = true});
    EXPECT_TRUE(waitFor([&] { return isUnavailable; }));
    Clock::setScale(1);
}

/// GNOME's keys, where nothing but the portal could serve them.
class GnomeHotKeysTest : public PortalHotKeyTest {
  protected:
    void startGnome(ShortcutsPortal::Behaviour behaviour) {
        desktop.emplace(behaviour);
        keys = std::make_unique<gnome::GnomeHotKeys>(
            QDBusConnection::sessionBus(),
            portal::PortalDesktop{.trigger = trigger,
                                  .isHeld = [](KeyCode, HotKeyModifiers) { return false; },
                                  .isAllowed = [this] { return allowed; },
                                  .repeat = {}});
        handler = keys->installHandler([this] { edges += u'+'; }, [this] { edges += u'-'; },
                                       [this](const auto& change) { told.push_back(change); });
        keys->registerHotKey(VirtualKey::space, HotKeyModifier::option, identity);
    }
    ~GnomeHotKeysTest() override { handler.reset(); }

    std::unique_ptr<gnome::GnomeHotKeys> keys;
};

TEST_F(GnomeHotKeysTest, ThePortalsEdgesArePassedOn) {
    allowed = true;
    startGnome({});
    EXPECT_FALSE(keys->name().isEmpty());
    ASSERT_TRUE(waitFor([&] { return !told.empty() && !told.back(); }));
    desktop->tell("Activated");
    EXPECT_TRUE(edgesBecome(QStringLiteral("+")));
    desktop->tell("Deactivated");
    EXPECT_TRUE(edgesBecome(QStringLiteral("+-")));
}

TEST_F(GnomeHotKeysTest, WithoutThePortalTheNextWayIsTaken) {
    startGnome({.knowsProgram = false});
    EXPECT_EQ(keys->edges(), HotKeyService::Edges::Both) << "until it has answered";
    ASSERT_TRUE(waitFor([&] { return keys->edges() == HotKeyService::Edges::None; }));
    EXPECT_TRUE(waitFor([&] { return !told.empty(); }));
    EXPECT_TRUE(keys->name().isEmpty());
    EXPECT_TRUE(keys->hints().empty());
}

}  // namespace
}  // namespace parlivo::desktop
