// SPDX-License-Identifier: MIT
#include "desktop/hotkey/HotKeyFixture.h"
#include "platform/linux/x11/X11KeyboardSynthesizer.h"
#include "support/Clock.h"
#include "support/Receiver.h"
#include "support/SerialQueue.h"
#include "support/Text.h"

#include <atomic>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

const QString text = QStringLiteral("Prima riga, con spazi e accenti: perché no? E poi un'altra, più lunga.");

/// A text is typed while the user is at the hot key. Nothing of it may end up in the hot key's grab.
class HotKeyTypingTest : public HotKeyTest {
  protected:
    HotKeyTypingTest() { synthesizer.prepare(); }

    void startTyping() {
        pipeline.async([this] {
            const auto source = synthesizer.makeSource(text);
            Text::forEachCharacter(text, [&](QStringView character) {
                source->postCharacter(character);
                return Clock::sleepFor(4ms);
            });
            typed = true;
        });
    }
    void pressHotKey() {
        keyboard.press(Key::leftAlt);
        keyboard.press(Key::space);
    }
    void releaseHotKey() {
        keyboard.release(Key::leftAlt);
        keyboard.release(Key::space);
    }
    void expectWholeText() {
        EXPECT_TRUE(waitFor([&] { return typed.load(); }));
        EXPECT_TRUE(receiver.waitForText(text, 5s)) << '"' << receiver.text().toStdString() << '"';
    }

    Receiver receiver{Receiver::Kind::Xterm};
    X11KeyboardSynthesizer synthesizer;
    std::atomic<bool> typed = false;
    SerialQueue pipeline{QStringLiteral("pipeline")};
};

TEST_F(HotKeyTypingTest, WaitsForAHotKeyThatIsHeld) {
    take("opt-space");
    pressHotKey();
    ASSERT_TRUE(edges(1, 0)) << seen();
    startTyping();
    letPass(longHold);
    EXPECT_FALSE(typed);
    releaseHotKey();
    expectWholeText();
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTypingTest, WaitsForTheKeyWhenItsModifierIsUp) {
    take("opt-space");
    pressHotKey();
    ASSERT_TRUE(edges(1, 0)) << seen();
    keyboard.release(Key::leftAlt);
    startTyping();
    letPass(longHold);
    keyboard.release(Key::space);
    expectWholeText();
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTypingTest, ReleasesAKeyThatIsHeldTooLong) {
    take("opt-space");
    pressHotKey();
    ASSERT_TRUE(edges(1, 0)) << seen();
    startTyping();
    expectWholeText();
    EXPECT_TRUE(edges(1, 1)) << seen();
    releaseHotKey();
    keyboard.tap(Key::a);
    EXPECT_TRUE(receiver.waitForText(text + QLatin1Char('a'), 5s)) << receiver.text().toStdString();
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTypingTest, PausesWhileTheHotKeyIsPressedInTheMiddle) {
    take("opt-space");
    startTyping();
    ASSERT_TRUE(waitFor([&] { return receiver.text().size() > 5; }));
    pressHotKey();
    letPass(longHold);
    EXPECT_FALSE(typed);
    releaseHotKey();
    expectWholeText();
    EXPECT_TRUE(edges(1, 1)) << seen();
}

}  // namespace
}  // namespace parlivo::desktop
