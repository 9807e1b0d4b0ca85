// SPDX-License-Identifier: MIT
#include "input/Injector.h"
#include "support/PlatformTest.h"
#include "support/Text.h"

#include <random>
#include <thread>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

const QString newText = QStringLiteral("testo dettato");

class InjectorTest : public PlatformTest {
  protected:
    QStringList strokesOf(const QString& text) {
        Injector::typeText(text);
        return platform.keyboard().strokes();
    }

    QString clipboard() { return platform.pasteboard().texts().value(PasteboardPlace::Clipboard); }
};

TEST_F(InjectorTest, ALineFeedBetweenLettersPressesReturn) {
    const auto start = Clock::now();
    EXPECT_EQ(strokesOf(QStringLiteral("a\nb")),
              QStringList({QStringLiteral("«a»"), QStringLiteral("key 36 0"), QStringLiteral("«b»")}));
    EXPECT_GE(Clock::now() - start, 3 * 3500us) << "a pause after each, the last included";
}

TEST_F(InjectorTest, ALoneCarriageReturnPressesReturn) {
    EXPECT_EQ(strokesOf(QStringLiteral("\r")), QStringList(QStringLiteral("key 36 0")));
}

TEST_F(InjectorTest, ATabPressesTab) {
    EXPECT_EQ(strokesOf(QStringLiteral("\t")), QStringList(QStringLiteral("key 48 0")));
}

TEST_F(InjectorTest, ACarriageReturnLineFeedPairIsOneCharacterAndNotReturn) {
    EXPECT_EQ(strokesOf(QStringLiteral("a\r\nb")),
              QStringList({QStringLiteral("«a»"), QStringLiteral("«\r\n»"), QStringLiteral("«b»")}));
}

TEST_F(InjectorTest, AnEmojiOfSeveralCodePointsIsOneStroke) {
    const QString family = QStringLiteral("👨‍👩‍👧‍👦");
    EXPECT_EQ(strokesOf(family), QStringList(QStringLiteral("«%1»").arg(family)));
}

TEST_F(InjectorTest, ACombiningAccentStaysWithItsLetter) {
    EXPECT_EQ(strokesOf(QStringLiteral("e\u0301")), QStringList(QStringLiteral("«e\u0301»")));
}

TEST_F(InjectorTest, AnEmptyTextTypesNothing) {
    EXPECT_TRUE(strokesOf({}).isEmpty());
}

TEST_F(InjectorTest, EveryCharacterIsTypedOnceAndInOrderWhateverTheText) {
    std::mt19937 random(11);
    const std::u32string alphabet = U"aè\u0301\u200d👍🏽👨👩🇮🇹\r\n\t가ᄀ\ufe0f❤ “—€";
    QString everything;
    for (int round = 0; round < 20; ++round) {
        QString text;
        for (int i = 0; i < 30; ++i) text += QString::fromUcs4(&alphabet[random() % alphabet.size()], 1);
        const qsizetype before = platform.keyboard().strokes().size();
        Injector::typeText(text);
        EXPECT_EQ(platform.keyboard().strokes().size() - before, Text::countCharacters(text));
        Text::forEachCharacter(text, [&](QStringView character) {
            everything += character == u"\r" ? QStringView(u"\n") : character;
            return true;
        });
    }
    EXPECT_EQ(platform.keyboard().typed(), everything);
}

TEST_F(InjectorTest, OneSourceTypesAWholeTextAndIsDestroyed) {
    Injector::typeText(QStringLiteral("abc"));
    EXPECT_EQ(platform.keyboard().sourcesMade, 1);
    EXPECT_EQ(platform.keyboard().sourcesAlive, 0);
}

TEST_F(InjectorTest, OnlyNaturalIsSlow) {
    EXPECT_EQ(Injector::pauseAfterCharacter(TypingSpeed::Natural), 12'000us);
    EXPECT_EQ(Injector::pauseAfterCharacter(TypingSpeed::Fast), 3'500us);
    EXPECT_EQ(Injector::pauseAfterCharacter(TypingSpeed::Instant), 3'500us) << "a text that is not pasted";
}

TEST_F(InjectorTest, TheSpeedIsReadFromTheSettings) {
    store(QStringLiteral("typingSpeed"), QStringLiteral("natural"));
    const auto start = Clock::now();
    Injector::typeText(QStringLiteral("abc"));
    EXPECT_GE(Clock::now() - start, 3 * 12'000us);
}

TEST_F(InjectorTest, TheEndOfTheProgramEndsTheTyping) {
    Clock::interruptAll();
    EXPECT_EQ(Injector::typeText(QStringLiteral("abcdef")), Injector::Outcome::CutOff);
    EXPECT_TRUE(platform.keyboard().strokes().isEmpty()) << "not one more character";
    EXPECT_EQ(platform.keyboard().sourcesAlive, 0);
}

TEST_F(InjectorTest, ATextThatTheKeyboardCannotHoldIsPasted) {
    platform.keyboard().canType = false;
    Injector::typeText(newText);
    EXPECT_EQ(platform.keyboard().strokes(), QStringList(QStringLiteral("key 9 1048576")));
    EXPECT_EQ(clipboard(), newText);
}

TEST_F(InjectorTest, TheRestOfATextIsPastedWhenTheKeyboardLosesCharacters) {
    platform.keyboard().failsAfter = 3;
    platform.keyboard().canSendShortcuts = false;
    EXPECT_EQ(Injector::typeText(QStringLiteral("abcdef")), Injector::Outcome::RestOnClipboard);
    EXPECT_EQ(platform.keyboard().typed(), QStringLiteral("abc"));
    EXPECT_EQ(clipboard(), QStringLiteral("def"));
    EXPECT_EQ(platform.pasteboard().sets().back().history, Pasteboard::History::Omit) << "to be pasted";
    EXPECT_EQ(platform.keyboard().sourcesAlive, 0);
}

TEST_F(InjectorTest, ACharacterWithoutAKeyIsSkippedAndLogged) {
    platform.keyboard().skipped = u'\a';
    EXPECT_EQ(Injector::typeText(QStringLiteral("a\ab\ac")), Injector::Outcome::Delivered);
    EXPECT_EQ(platform.keyboard().typed(), QStringLiteral("abc"));
    EXPECT_EQ(Injector::typeText(QStringLiteral("\ad")), Injector::Outcome::Delivered);
    EXPECT_EQ(logged(), QStringList({QStringLiteral("caratteri senza un tasto, non digitati: 2"),
                                     QStringLiteral("caratteri senza un tasto, non digitati: 1")}));
}

TEST_F(InjectorTest, ASourceOfPiecesGetsWholeCharactersAtThePaceAndInOrder) {
    platform.keyboard().intake = TextIntake::Pieces;
    QString text;
    for (int i = 0; i < 60; ++i) text += QStringLiteral("è👍🏽\n");
    const auto start = Clock::now();
    EXPECT_EQ(Injector::typeText(text), Injector::Outcome::Delivered);
    const QStringList strokes = platform.keyboard().strokes();
    EXPECT_EQ(platform.keyboard().typed(), text);
    EXPECT_GT(strokes.size(), 1);
    for (const QString& stroke : strokes) EXPECT_NE(stroke.at(1), QChar(0xd83c)) << "a skin tone alone";
    EXPECT_GE(Clock::now() - start, 180 * 3500us - 60ms) << "no faster than the pace";
}

TEST_F(InjectorTest, CharactersThatAreDueTogetherAreOnePiece) {
    platform.keyboard().intake = TextIntake::Pieces;
    platform.keyboard().beforeStroke = [] { Clock::sleepFor(20ms); };
    const QString text = QStringLiteral("parola ").repeated(10);
    EXPECT_EQ(Injector::typeText(text), Injector::Outcome::Delivered);
    EXPECT_EQ(platform.keyboard().typed(), text);
    EXPECT_LT(platform.keyboard().strokes().size(), text.size() / 2);
}

TEST_F(InjectorTest, APieceIsNeverLongerThanItMayBe) {
    platform.keyboard().intake = TextIntake::Pieces;
    QString text;
    for (int i = 0; i < 3; ++i) text += QString(1500, QChar(0x0301)).prepend(QLatin1Char('a'));
    EXPECT_EQ(Injector::typeText(text), Injector::Outcome::Delivered);
    EXPECT_EQ(platform.keyboard().typed(), text);
    for (const QString& stroke : platform.keyboard().strokes())
        EXPECT_LE(stroke.mid(1).chopped(1).toUtf8().size(), KeyEventSource::maxPieceBytes);
}

TEST_F(InjectorTest, APieceThatIsNotTakenGoesToThePasteboardWithAllThatFollows) {
    platform.keyboard().intake = TextIntake::Pieces;
    platform.keyboard().failsAfter = 1;
    platform.keyboard().canSendShortcuts = false;
    const QString text = QStringLiteral("0123456789").repeated(10);
    EXPECT_EQ(Injector::typeText(text), Injector::Outcome::RestOnClipboard);
    EXPECT_EQ(platform.keyboard().typed() + clipboard(), text);
}

TEST_F(InjectorTest, ARestThatThePasteboardDoesNotTakeEitherIsLost) {
    platform.keyboard().intake = TextIntake::Pieces;
    platform.keyboard().failsAfter = 1;
    platform.keyboard().failure = Posted::NotTaken;
    platform.pasteboard().refuses = true;
    EXPECT_EQ(Injector::typeText(QStringLiteral("0123456789").repeated(10)), Injector::Outcome::Lost);
}

TEST_F(InjectorTest, AReceiverThatTakesNothingMoreIsSentNoShortcutEither) {
    platform.keyboard().intake = TextIntake::Pieces;
    platform.keyboard().failsAfter = 1;
    platform.keyboard().failure = Posted::NotTaken;
    const QString text = QStringLiteral("0123456789").repeated(10);
    EXPECT_EQ(Injector::typeText(text), Injector::Outcome::RestOnClipboard);
    EXPECT_EQ(platform.keyboard().typed() + clipboard(), text);
    EXPECT_EQ(platform.keyboard().strokes().size(), 1);
    EXPECT_EQ(platform.pasteboard().sets().back().history, Pasteboard::History::Keep)
        << "for the user to paste";
    EXPECT_EQ(platform.keyboard().sourcesAlive, 0);
}

TEST_F(InjectorTest, PostKeyPostsOneKeyWithItsFlags) {
    const auto source = platform.keyboard().makeShortcutSource();
    Injector::postKey(9, *source, KeyFlag::command);
    EXPECT_EQ(platform.keyboard().strokes(), QStringList(QStringLiteral("key 9 1048576")));
}

}  // namespace
}  // namespace parlivo
