// SPDX-License-Identifier: MIT
#include "desktop/wayland/Hands.h"
#include "desktop/wayland/Measured.h"
#include "desktop/wayland/Sway.h"
#include "desktop/wayland/WaylandReceiver.h"
#include "input/Injector.h"
#include "platform/linux/wayland/DataControlPasteboard.h"
#include "platform/linux/wayland/InputMethod.h"
#include "platform/linux/wayland/WaylandKeyboard.h"
#include "support/Pipeline.h"
#include "support/PlatformTest.h"
#include "support/Text.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using Kind = WaylandReceiver::Kind;

/// Text of many kinds, this many characters long.
QString mixed(qsizetype characters) {
    static const QString sample = QStringLiteral(
        "Perché la città è così bella? Non c’è dubbio: «l’università» e il caffè, più virtù, già giù.\n"
        "Disse: “Andiamo — subito!” e pagò 12,50 €; poi… ‘forse’. 👨‍👩‍👧‍👦 👍🏽 🇮🇹 ❤️ "
        "日本語のテキスト、漢字かな交じり文。 שלום עולם 한국어 ąćęłńóśźż\n");
    const auto each = Text::countCharacters(sample);
    return Text::firstCharacters(sample.repeated(characters / each + 1), characters);
}

/// A program that types into a real window, with real keyboard and clipboard and fakes for all else.
class WaylandTypingTest : public PlatformTest {
  protected:
    WaylandTypingTest() : connection_(wayland::WaylandConnection::open()) {
        auto keys = std::make_unique<wayland::VirtualKeyboard>(*connection_);
        keyboard_.emplace(wayland::InputMethod::make(*connection_), std::move(keys));
        pasteboard_ = wayland::DataControlPasteboard::open();
        platform.keyboard().real = &*keyboard_;
        platform.pasteboard().real = pasteboard_.get();
        pipeline_.run([this] { keyboard_->prepare(); });
    }

    void startTyping(const QString& text) {
        pipeline_.start([this, text] { outcome_ = Injector::typeText(text); });
    }
    Injector::Outcome type(const QString& text) {
        startTyping(text);
        EXPECT_TRUE(pipeline_.finish());
        return outcome_;
    }
    Injector::Outcome paste(const QString& text) {
        pipeline_.run([this, text] { outcome_ = Injector::paste(text); });
        return outcome_;
    }
    /// Whether the focused window takes text without keys; a new window says so a moment after it has the
    /// focus.
    bool takesText() {
        return waitFor([this] { return keyboard_->makeSource({}) != nullptr; });
    }

    Hands hands_;
    std::unique_ptr<wayland::WaylandConnection> connection_;
    std::optional<wayland::WaylandKeyboard> keyboard_;
    std::unique_ptr<wayland::DataControlPasteboard> pasteboard_;
    Injector::Outcome outcome_ = Injector::Outcome::CutOff;
    Pipeline pipeline_;
};

class EveryWaylandReceiver : public WaylandTypingTest, public testing::WithParamInterface<Kind> {};
class EveryTextField : public EveryWaylandReceiver {};

TEST_P(EveryTextField, TakesTenThousandCharactersInTheLargestPieces) {
    const WaylandReceiver receiver(GetParam());
    ASSERT_TRUE(takesText());
    const QString text = mixed(10'000);
    const auto begin = Clock::now();
    pipeline_.run([&] {
        const auto source = keyboard_->makeSource(text);
        qsizetype posted = 0;
        QString piece;
        const auto post = [&] {
            ASSERT_EQ(source->postPiece(piece), Posted::Yes);
            posted += piece.size();
            piece.clear();
            Clock::sleepFor(56ms);
        };
        Text::forEachCharacter(text, [&](QStringView character) {
            const auto bytes = piece.toUtf8().size() + character.toUtf8().size();
            if (bytes > KeyEventSource::maxPieceBytes) post();
            piece += character;
            return true;
        });
        post();
        EXPECT_EQ(posted, text.size());
    });
    EXPECT_TRUE(receiver.waitForText(text)) << qPrintable(receiver.text());
    tellMeasured(GetParam(), "input method, largest pieces", 10'000, Clock::now() - begin);
    EXPECT_EQ(sway::clipboard(), QByteArray()) << "pasted, not typed";
}

TEST_P(EveryTextField, TakesEachCharacterAtThePace) {
    const WaylandReceiver receiver(GetParam());
    ASSERT_TRUE(takesText());
    const QString text = mixed(500);
    const auto begin = Clock::now();
    EXPECT_EQ(type(text), Injector::Outcome::Delivered);
    const auto taken = Clock::now() - begin;
    EXPECT_TRUE(receiver.waitForText(text)) << qPrintable(receiver.text());
    EXPECT_EQ(sway::clipboard(), QByteArray()) << "pasted, not typed";
    tellMeasured(GetParam(), "input method, fast", 500, taken);
}

INSTANTIATE_TEST_SUITE_P(All, EveryTextField,
                         testing::Values(Kind::Foot, Kind::Gtk3, Kind::Gtk4, Kind::ChromiumText),
                         [](const auto& kind) { return nameOf(kind.param); });

TEST_P(EveryWaylandReceiver, PastesTenThousandCharacters) {
    sway::copy("prima");
    sway::copy("evidenziato", {QStringLiteral("--primary")});
    const WaylandReceiver receiver(GetParam());
    const QString text = mixed(10'000);
    const auto begin = Clock::now();
    EXPECT_EQ(paste(text), Injector::Outcome::Delivered);
    EXPECT_TRUE(receiver.waitForText(text)) << qPrintable(receiver.text());
    tellMeasured(GetParam(), "paste", 10'000, Clock::now() - begin);
    EXPECT_TRUE(waitFor([] { return sway::clipboard() == "prima"; })) << sway::clipboard().constData();
    EXPECT_TRUE(waitFor([] { return sway::clipboard({QStringLiteral("--primary")}) == "evidenziato"; }));
}

INSTANTIATE_TEST_SUITE_P(All, EveryWaylandReceiver,
                         testing::Values(Kind::Foot, Kind::Gtk3, Kind::Gtk4, Kind::Qt, Kind::Chromium),
                         [](const auto& kind) { return nameOf(kind.param); });

/// A program that keeps what is copied, but nothing that its owner marks as passing.
class ClipboardHistory {
  public:
    ClipboardHistory() {
        const QString keepUnlessMarked = QStringLiteral(
            "wl-paste --list-types | grep -q x-kde-passwordManagerHint || { wl-paste --no-newline; echo; } >>\"$0\"");
        watcher_.start(QStringLiteral("wl-paste"), {QStringLiteral("--watch"), QStringLiteral("sh"),
                                                    QStringLiteral("-c"), keepUnlessMarked, file_});
    }
    QByteArray kept() const {
        QFile file(file_);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

  private:
    QTemporaryDir folder_;
    QString file_ = folder_.filePath(QStringLiteral("history"));
    ProcessGroup watcher_;
};

TEST_F(WaylandTypingTest, AHistoryThatHonoursTheMarkKeepsNothing) {
    const ClipboardHistory history;
    const WaylandReceiver receiver(Kind::Gtk3);
    sway::copy("prima");
    ASSERT_TRUE(waitFor([&] { return history.kept() == "prima\n"; })) << history.kept().constData();
    const QString text = mixed(10'000);
    EXPECT_EQ(paste(text), Injector::Outcome::Delivered);
    EXPECT_TRUE(receiver.waitForText(text)) << qPrintable(receiver.text());
    EXPECT_TRUE(waitFor([] { return sway::clipboard() == "prima"; })) << sway::clipboard().constData();
    sway::copy("dopo");
    EXPECT_TRUE(waitFor([&] { return history.kept() == "prima\ndopo\n"; })) << history.kept().constData();
}

using Standstill = std::tuple<Kind, int>;  // milliseconds

class StandingStill : public WaylandTypingTest, public testing::WithParamInterface<Standstill> {};

TEST_P(StandingStill, AReceiverLivesOnAndHasEveryCharacter) {
    const auto [kind, duration] = GetParam();
    const WaylandReceiver receiver(kind);
    ASSERT_TRUE(takesText());
    const QString text = mixed(800);
    startTyping(text);
    ASSERT_TRUE(waitFor([&] { return !receiver.text().isEmpty(); }));
    receiver.freeze();
    letPass(std::chrono::milliseconds(duration));
    receiver.thaw();
    EXPECT_TRUE(pipeline_.finish());
    EXPECT_EQ(outcome_, Injector::Outcome::Delivered);
    EXPECT_TRUE(receiver.waitForText(text)) << qPrintable(receiver.text());
    EXPECT_TRUE(receiver.isShown());
}

INSTANTIATE_TEST_SUITE_P(All, StandingStill,
                         testing::Values(Standstill{Kind::Foot, 500}, Standstill{Kind::Foot, 3000},
                                         Standstill{Kind::Foot, 6000}, Standstill{Kind::Gtk3, 500},
                                         Standstill{Kind::Gtk3, 3000}, Standstill{Kind::Gtk3, 6000},
                                         Standstill{Kind::Gtk4, 3000}, Standstill{Kind::Gtk4, 6000}),
                         [](const auto& cell) {
                             return nameOf(std::get<Kind>(cell.param)) + "_" +
                                    std::to_string(std::get<int>(cell.param));
                         });

TEST_F(WaylandTypingTest, WhatAFrozenReceiverDoesNotTakeGoesToTheClipboard) {
    const WaylandReceiver receiver(Kind::Gtk3);
    ASSERT_TRUE(takesText());
    Clock::setScale(0.2);
    const QString text = mixed(1500);
    startTyping(text);
    ASSERT_TRUE(waitFor([&] { return !receiver.text().isEmpty(); }));
    receiver.freeze();
    EXPECT_TRUE(pipeline_.finish());
    EXPECT_EQ(outcome_, Injector::Outcome::RestOnClipboard);
    const QString rest = QString::fromUtf8(sway::clipboard());
    EXPECT_FALSE(rest.isEmpty());
    receiver.thaw();
    EXPECT_TRUE(waitFor([&] { return receiver.text() + rest == text; })) << qPrintable(receiver.text());
}

TEST_F(WaylandTypingTest, AFrozenReceiverOfAPasteGetsTheTextWhenItReads) {
    sway::copy("prima");
    const WaylandReceiver receiver(Kind::Gtk3);
    receiver.freeze();
    EXPECT_EQ(paste(QStringLiteral("testo più tardi")), Injector::Outcome::LeftOnClipboard);
    EXPECT_EQ(sway::clipboard(), "testo più tardi");
    receiver.thaw();
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("testo più tardi"))) << qPrintable(receiver.text());
}

TEST_F(WaylandTypingTest, TheTextFollowsTheFocusAndLosesNothing) {
    const WaylandReceiver first(Kind::Gtk3);
    const WaylandReceiver second(Kind::Gtk4);
    ASSERT_TRUE(takesText());
    const QString text = mixed(800);
    startTyping(text);
    ASSERT_TRUE(waitFor([&] { return !second.text().isEmpty(); }));
    first.focus();
    ASSERT_TRUE(waitFor([&] { return !first.text().isEmpty(); }));
    second.focus();
    EXPECT_TRUE(pipeline_.finish());
    EXPECT_EQ(outcome_, Injector::Outcome::Delivered);
    // What stands in the first lies somewhere in the midst of the text.
    const auto whole = [&] {
        const QString middle = first.text();
        const QString ends = second.text();
        for (qsizetype cut = 0; cut <= ends.size(); ++cut)
            if (ends.first(cut) + middle + ends.sliced(cut) == text) return true;
        return false;
    };
    EXPECT_TRUE(waitFor(whole)) << qPrintable(second.text()) << "\n---\n" << qPrintable(first.text());
}

TEST_F(WaylandTypingTest, TheRestIsPastedWhereTheFocusWentToAWindowWithoutTextInput) {
    const WaylandReceiver qt(Kind::Qt);
    const WaylandReceiver gtk(Kind::Gtk3);
    ASSERT_TRUE(takesText());
    const QString text = mixed(800);
    startTyping(text);
    ASSERT_TRUE(waitFor([&] { return !gtk.text().isEmpty(); }));
    qt.focus();
    EXPECT_TRUE(pipeline_.finish());
    EXPECT_EQ(outcome_, Injector::Outcome::Delivered);
    EXPECT_TRUE(waitFor([&] { return gtk.text() + qt.text() == text; }))
        << qPrintable(gtk.text()) << "\n---\n"
        << qPrintable(qt.text());
}

TEST_F(WaylandTypingTest, WithoutATextFieldTheTextStaysOnTheClipboard) {
    const QString text = mixed(100);
    EXPECT_EQ(type(text), Injector::Outcome::LeftOnClipboard);
    EXPECT_EQ(sway::clipboard(), text.toUtf8());
    letPass(700ms);
    EXPECT_EQ(sway::clipboard(), text.toUtf8()) << "taken back";
}

TEST_F(WaylandTypingTest, ControlCharactersAreLeftOut) {
    const WaylandReceiver receiver(Kind::Gtk3);
    ASSERT_TRUE(takesText());
    EXPECT_EQ(type(QStringLiteral("a\u0007b\r\nc\td\re\u007ff")), Injector::Outcome::Delivered);
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("ab\nc\td\nef"))) << qPrintable(receiver.text());
}

TEST(DeadCompositorTest, TheInputMethodIsRefusedAtOnce) {
    const auto connection = wayland::WaylandConnection::open();
    const auto method = wayland::InputMethod::make(*connection);
    ASSERT_TRUE(method);
    sway::kill();
    EXPECT_TRUE(waitFor([&] { return method->presence() == wayland::InputMethod::Presence::Refused; }));
    EXPECT_TRUE(method->waitForAnswer(Clock::now())) << "nothing to wait for";
    EXPECT_FALSE(method->waitUntilActive(Clock::now() + 1h));
    EXPECT_NE(method->commit("a"), wayland::InputMethod::Commit::Accepted);
}

TEST(SecondInputMethodTest, IsRefusedAndTheTextPasted) {
    const auto first = wayland::WaylandConnection::open();
    const auto theirs = wayland::InputMethod::make(*first);
    ASSERT_TRUE(theirs);
    const auto second = wayland::WaylandConnection::open();
    auto ours = wayland::InputMethod::make(*second);
    ASSERT_TRUE(ours);
    ASSERT_TRUE(waitFor([&] { return ours->presence() == wayland::InputMethod::Presence::Refused; }));
    wayland::WaylandKeyboard keyboard(std::move(ours), std::make_unique<wayland::VirtualKeyboard>(*second));
    EXPECT_FALSE(keyboard.canCommitText());
    EXPECT_TRUE(keyboard.canPressKeys());
    EXPECT_EQ(keyboard.makeSource(QStringLiteral("a")), nullptr);
}

}  // namespace
}  // namespace parlivo::desktop
