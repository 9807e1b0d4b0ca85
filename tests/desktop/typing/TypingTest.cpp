// SPDX-License-Identifier: MIT
#include "input/Injector.h"
#include "platform/linux/x11/KeyEvents.h"
#include "platform/linux/x11/KeySymbols.h"
#include "support/Keyboard.h"
#include "support/KeyboardMap.h"
#include "support/Pipeline.h"
#include "support/Receiver.h"
#include "support/TypingPlatform.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QProcess>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <csignal>
#include <optional>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

const QString prose = QStringLiteral(
    "Perché la città è così bella? Non c’è dubbio: «l’università» e il caffè, più virtù, già giù.\n"
    "\tDisse: “Andiamo — subito!” e pagò 12,50 €; poi… ‘forse’.\r\nÈ l’ora – "
    "👨‍👩‍👧‍👦 "
    "👍🏽 "
    "🇮🇹 ❤️ 🧑🏿‍💻!\n");
const QString scripts = QStringLiteral(
    "Съешь ещё этих мягких французских булок. 日本語のテキスト、漢字かな交じり文。 한국어 텍스트 "
    "Ελληνικά שלום ½×÷±→★∞√ ąćęłńóśźż ěščřžýáíé ğışöü\r\nfine");

/// What a receiver holds after `text`: a line end is one character there.
QString held(const QString& text) {
    return QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

std::string shown(const Receiver& receiver) {
    return receiver.text().toStdString();
}

/// A user at the keyboard, a program that types, and something that it types into.
class TypingTest : public testing::Test {
  protected:
    explicit TypingTest(const char* layout = "us") {
        Keyboard::setLayout(layout);
        mapBefore_ = keyboardMap();
    }
    ~TypingTest() override { program_.reset(); }
    TypingTest(const TypingTest&) = delete;
    TypingTest& operator=(const TypingTest&) = delete;

    void startProgram() {
        program_.emplace();
        pipeline_.run([] { Platform::current().keyboard().prepare(); });
    }
    void endProgram() { program_.reset(); }

    void startTyping(const QString& text) {
        pipeline_.start([text] { Injector::typeText(text); });
    }
    void finishTyping() { ASSERT_TRUE(pipeline_.finish()); }
    void type(const QString& text) {
        startTyping(text);
        finishTyping();
    }

    /// The keyboard must be what it was before the program came, to the last byte.
    void expectMapAsBefore() const {
        EXPECT_FALSE(mapBefore_.isEmpty());
        EXPECT_EQ(keyboardMap(), mapBefore_);
    }

    Keyboard user_;
    Pipeline pipeline_;
    QByteArray mapBefore_;
    std::optional<TypingProgram> program_;
};

using Cell = std::tuple<Receiver::Kind, const char*>;

class EveryReceiverAndLayout : public TypingTest, public testing::WithParamInterface<Cell> {
  protected:
    EveryReceiverAndLayout() : TypingTest(std::get<const char*>(GetParam())) {}
};

TEST_P(EveryReceiverAndLayout, TakesEveryCharacter) {
    startProgram();
    const Receiver receiver(std::get<Receiver::Kind>(GetParam()));
    QString expected = held(prose);
    type(prose);
    ASSERT_TRUE(receiver.waitForText(expected)) << shown(receiver);

    constexpr std::uint16_t locks = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2;
    user_.setLocks(locks);
    type(prose);
    expected += held(prose);
    ASSERT_TRUE(receiver.waitForText(expected)) << "with Caps Lock and Num Lock: " << shown(receiver);
    EXPECT_EQ(user_.locks(), locks) << "not given back";
    user_.setLocks(0);

    user_.press(Key::leftShift);
    startTyping(prose);
    letPass(300ms);
    user_.release(Key::leftShift);
    finishTyping();
    expected += held(prose);
    ASSERT_TRUE(receiver.waitForText(expected)) << "with Shift held late: " << shown(receiver);

    EXPECT_FALSE(QGuiApplication::clipboard()->ownsClipboard()) << "pasted, not typed";
    endProgram();
    expectMapAsBefore();
}

INSTANTIATE_TEST_SUITE_P(All, EveryReceiverAndLayout,
                         testing::Combine(testing::Values(Receiver::Kind::Xterm, Receiver::Kind::Gtk3,
                                                          Receiver::Kind::Qt, Receiver::Kind::Chromium),
                                          testing::Values("us", "it", "de")),
                         [](const auto& cell) {
                             return nameOf(std::get<0>(cell.param)) + std::string("_") +
                                    std::get<1>(cell.param);
                         });

class EveryReceiver : public TypingTest, public testing::WithParamInterface<Receiver::Kind> {};

TEST_P(EveryReceiver, TakesATextOfManyScriptsByPaste) {
    startProgram();
    const Receiver receiver(GetParam());
    type(scripts);
    EXPECT_TRUE(receiver.waitForText(held(scripts))) << shown(receiver);
}

TEST_P(EveryReceiver, LosesNothingWhileItIsFrozen) {
    startProgram();
    const Receiver receiver(GetParam());
    receiver.freeze();
    type(prose);
    type(QStringLiteral("ñandú, Übermaß, œuvre.\n"));
    letPass(2500ms);
    receiver.thaw();
    EXPECT_TRUE(receiver.waitForText(held(prose) + QStringLiteral("ñandú, Übermaß, œuvre.\n")))
        << shown(receiver);
}

TEST_P(EveryReceiver, TakesASecondTextRightAfterTheFirst) {
    startProgram();
    const Receiver receiver(GetParam());
    pipeline_.run([] {
        Injector::typeText(QStringLiteral("perché "));
        Injector::typeText(QStringLiteral("Straße ñ "));
        Injector::typeText(QStringLiteral("più"));
    });
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("perché Straße ñ più"))) << shown(receiver);
}

TEST_P(EveryReceiver, TakesTextsThatDisplaceEachOthersCharacters) {
    startProgram();
    const Receiver receiver(GetParam());
    const QString russian = QStringLiteral("съешь ещё этих мягких булок ");
    const QString greek = QStringLiteral("ξεσκεπάζω την ψυχοφθόρα ");
    pipeline_.run([&] {
        for (const QString& text : {russian, greek, russian}) Injector::typeText(text);
    });
    EXPECT_TRUE(receiver.waitForText(russian + greek + russian)) << shown(receiver);
}

INSTANTIATE_TEST_SUITE_P(All, EveryReceiver,
                         testing::Values(Receiver::Kind::Xterm, Receiver::Kind::Gtk3, Receiver::Kind::Gtk4,
                                         Receiver::Kind::Qt, Receiver::Kind::Chromium),
                         [](const auto& kind) { return nameOf(kind.param); });

class HeldModifier : public TypingTest, public testing::WithParamInterface<xcb_keycode_t> {};

TEST_P(HeldModifier, IsWaitedFor) {
    startProgram();
    const Receiver receiver(Receiver::Kind::Xterm);
    user_.press(GetParam());
    startTyping(QStringLiteral("Città 1."));
    letPass(300ms);
    EXPECT_FALSE(pipeline_.isDone());
    user_.release(GetParam());
    finishTyping();
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("Città 1."))) << shown(receiver);
}

TEST_P(HeldModifier, IsReleasedInTheEndAndDoesNotStick) {
    startProgram();
    const Receiver receiver(Receiver::Kind::Xterm);
    user_.press(GetParam());
    type(QStringLiteral("Città 1."));
    ASSERT_TRUE(receiver.waitForText(QStringLiteral("Città 1."))) << shown(receiver);
    user_.release(GetParam());
    EXPECT_FALSE(user_.isDown(GetParam()));
    user_.tap(Key::a);
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("Città 1.a"))) << shown(receiver);
}

INSTANTIATE_TEST_SUITE_P(All, HeldModifier,
                         testing::Values(Key::leftAlt, Key::rightAlt, Key::leftControl, Key::leftShift,
                                         Key::leftSuper));

TEST_F(TypingTest, ControlCharactersPressNoKeys) {
    startProgram();
    const Receiver receiver(Receiver::Kind::Xterm);
    type(QStringLiteral("a\b\x1b\x7f\x03\u0085z"));
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("az"))) << shown(receiver);
}

TEST_F(TypingTest, AModifierThatAnotherTypingProgramLeftDownDoesNoHarm) {
    const Receiver receiver(Receiver::Kind::Xterm);
    Keyboard otherProgram(Keyboard::Device::Synthetic);
    otherProgram.press(Key::leftShift);
    user_.press(Key::leftShift);
    user_.release(Key::leftShift);
    ASSERT_FALSE(user_.isDown(Key::leftShift)) << "down on the synthetic keyboard only";
    startProgram();
    type(QStringLiteral("Disse “Sì”"));
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("Disse “Sì”"))) << shown(receiver);
}

TEST_F(TypingTest, ComingAfterTheUsersKeyboardIsNotTakenForANewMap) {
    const auto keyboard = x11::X11Keyboard::open();
    x11::SpareKeyMap keys(*keyboard);
    for (int text = 0; text < 2; ++text) {
        user_.tap(Key::leftShift);
        const auto source = x11::KeyEvents::make(*keyboard, keys, x11::keySymbols(u"così"));
        keyboard->sync();
        EXPECT_FALSE(keyboard->mapChanged()) << "the first key would wait until the map is quiet";
    }
}

TEST_F(TypingTest, FollowsTheLayoutInForceFromTextToText) {
    Keyboard::setLayout("us,it,de,fr");
    mapBefore_ = keyboardMap();
    startProgram();
    const Receiver receiver(Receiver::Kind::Qt);
    QString expected;
    for (const std::uint8_t group : {std::uint8_t{1}, std::uint8_t{3}, std::uint8_t{0}, std::uint8_t{2}}) {
        user_.setGroup(group);
        const QString text = QStringLiteral("Zaìn @%1 [perché] {ö} ~ç|").arg(group);
        type(text);
        expected += text;
        ASSERT_TRUE(receiver.waitForText(expected)) << shown(receiver);
    }
    endProgram();
    expectMapAsBefore();
}

TEST_F(TypingTest, GivesRareCharactersRoomTextAfterText) {
    startProgram();
    const Receiver receiver(Receiver::Kind::Gtk3);
    QString expected;
    for (const char* text :
         {"съешь ещё этих мягких булок ", "ξεσκεπάζω την ψυχοφθόρα ", "árvíztűrő tükörfúrógép ",
          "pchnąć w tę łódź jeża ", "è così — «più» ", "съешь ещё этих мягких булок "}) {
        type(QString::fromUtf8(text));
        expected += QString::fromUtf8(text);
        ASSERT_TRUE(receiver.waitForText(expected)) << shown(receiver);
    }
    endProgram();
    expectMapAsBefore();
}

TEST_F(TypingTest, RecoversWhenAnotherProgramSetsTheKeyboardInTheMiddle) {
    startProgram();
    const Receiver receiver(Receiver::Kind::Qt);
    const QString beginning(400, QLatin1Char('a'));
    startTyping(beginning + QStringLiteral(" perché — più"));
    ASSERT_TRUE(waitFor([&] { return receiver.text().size() > 20; }));
    Keyboard::setLayout("us");
    finishTyping();
    EXPECT_TRUE(receiver.waitForText(beginning + QStringLiteral(" perché — più"))) << shown(receiver);
}

TEST_F(TypingTest, TakesOverTheKeysOfAKilledRun) {
    const pid_t child = ::fork();
    if (child == 0) {
        X11KeyboardSynthesizer synthesizer;
        synthesizer.prepare();
        synthesizer.makeSource(u"съешь");
        ::raise(SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_NE(keyboardMap(), mapBefore_) << "nothing was left behind";

    startProgram();
    const Receiver receiver(Receiver::Kind::Qt);
    type(prose);
    EXPECT_TRUE(receiver.waitForText(held(prose))) << shown(receiver);
    endProgram();
    expectMapAsBefore();
}

TEST_F(TypingTest, LeavesTheKeysOfALivingProgramToIt) {
    startProgram();
    auto other = std::make_unique<X11KeyboardSynthesizer>();
    pipeline_.run([&other] {
        other->prepare();
        other->makeSource(u"съешь");
    });
    const Receiver receiver(Receiver::Kind::Qt);
    type(QStringLiteral("più "));
    other.reset();
    type(QStringLiteral("perché"));
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("più perché"))) << shown(receiver);
    endProgram();
    expectMapAsBefore();
}

/// An X server of the test's own, in which programs cannot press keys.
TEST(TypingPermissionTest, IsRefusedByAServerWithoutTheTestExtension) {
    QProcess server;
    server.start(QStringLiteral("Xvfb"),
                 {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-extension"),
                  QStringLiteral("XTEST"), QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    ASSERT_TRUE(waitFor([&server] { return server.canReadLine(); }));
    const QByteArray display = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":" + server.readLine().trimmed());
    EXPECT_FALSE(x11TypingAllowed());
    EXPECT_EQ(X11KeyboardSynthesizer().makeSource(u"a"), nullptr);
    qputenv("DISPLAY", display);
    server.terminate();
    EXPECT_TRUE(waitFor([&server] { return server.state() == QProcess::NotRunning; }));
}

TEST(TypingPermissionTest, IsWhatTheDisplayHasToOffer) {
    EXPECT_TRUE(x11TypingAllowed());
    const QByteArray display = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":987");
    EXPECT_FALSE(x11TypingAllowed());
    X11KeyboardSynthesizer synthesizer;
    EXPECT_EQ(synthesizer.makeSource(u"a"), nullptr);
    EXPECT_EQ(synthesizer.makeShortcutSource(), nullptr);
    qputenv("DISPLAY", display);
    EXPECT_NE(synthesizer.makeSource(u"a"), nullptr) << "the display has come back";
}

}  // namespace
}  // namespace parlivo::desktop
