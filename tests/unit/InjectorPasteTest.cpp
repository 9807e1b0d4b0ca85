// SPDX-License-Identifier: MIT
#include "input/Injector.h"
#include "support/AskedWaits.h"
#include "support/MainQueue.h"
#include "support/PlatformTest.h"

#include <QCoreApplication>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

const QString newText = QStringLiteral("testo dettato");

class PasteTest : public PlatformTest {
  protected:
    PasteTest() { Clock::setScale(0.02); }

    /// Lets the time pass in which a restore would happen.
    static void passRestoreTime() {
        static const Lifetime always;
        bool passed = false;
        MainQueue::after(600ms, always.token(), [&passed] { passed = true; });
        while (!passed) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }

    void userCopies(const QString& clipboard, const QString& selection) {
        platform.pasteboard().selectionTaken(
            {{PasteboardPlace::Clipboard, clipboard}, {PasteboardPlace::PrimarySelection, selection}});
    }

    QString clipboard() { return platform.pasteboard().texts().value(PasteboardPlace::Clipboard); }
    QString selection() { return platform.pasteboard().texts().value(PasteboardPlace::PrimarySelection); }
};

TEST_F(PasteTest, TheTextIsThereBeforeTheShortcutAndNoHistoryKeepsIt) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    QStringList thereAtTheShortcut;
    platform.keyboard().beforeStroke = [&] { thereAtTheShortcut = {clipboard(), selection()}; };
    Injector::paste(newText);
    EXPECT_EQ(platform.keyboard().strokes(), QStringList(QStringLiteral("key 9 1048576")));
    EXPECT_EQ(thereAtTheShortcut, QStringList({newText, newText}));
    const auto sets = platform.pasteboard().sets();
    ASSERT_EQ(sets.size(), 1U);
    EXPECT_EQ(sets.front().text, newText);
    EXPECT_EQ(sets.front().history, Pasteboard::History::Omit);
    EXPECT_EQ(clipboard(), newText);
    EXPECT_EQ(platform.keyboard().sourcesAlive, 0);
    passRestoreTime();
}

TEST_F(PasteTest, ThePasteboardSettlesForFiftyMillisecondsAndIsRestoredAfterHalfASecond) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    const AskedWaits asked;
    std::vector<std::chrono::milliseconds> askedBeforeTheShortcut;
    platform.keyboard().beforeStroke = [&] { askedBeforeTheShortcut = asked.all(); };
    Injector::paste(newText);
    EXPECT_EQ(askedBeforeTheShortcut, std::vector{50ms});
    EXPECT_EQ(asked.all(), (std::vector{50ms, 500ms}))
        << "for a program that ends before its main queue's turn";
    passRestoreTime();
    EXPECT_EQ(asked.count(500ms), 2) << "and for the main queue";
}

TEST_F(PasteTest, WhatWasThereComesBackInEachPlace) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    Injector::paste(newText);
    EXPECT_EQ(platform.pasteboard().restores(), 0) << "not before the main queue's time has come";
    passRestoreTime();
    EXPECT_EQ(clipboard(), QStringLiteral("prima"));
    EXPECT_EQ(selection(), QStringLiteral("evidenziato"));
}

TEST_F(PasteTest, WhereNoTextWasThePastedOneStays) {
    platform.pasteboard().selectionTaken(
        {{PasteboardPlace::PrimarySelection, QStringLiteral("evidenziato")}});
    Injector::paste(newText);
    passRestoreTime();
    EXPECT_EQ(clipboard(), newText) << "an image was there, and is lost";
    EXPECT_EQ(selection(), QStringLiteral("evidenziato"));
}

TEST_F(PasteTest, NothingIsRestoredWhenNothingWasThere) {
    Injector::paste(newText);
    passRestoreTime();
    EXPECT_EQ(platform.pasteboard().restores(), 0);
    EXPECT_EQ(clipboard(), newText);
}

TEST_F(PasteTest, WhatAnotherProgramCopiesMeanwhileStays) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    Injector::paste(newText);
    userCopies(QStringLiteral("nuovo"), QStringLiteral("altro"));
    passRestoreTime();
    EXPECT_EQ(clipboard(), QStringLiteral("nuovo"));
    EXPECT_EQ(selection(), QStringLiteral("altro"));
}

TEST_F(PasteTest, ASecondPasteRightAfterTheFirstGivesBackWhatTheUserHad) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    Injector::paste(newText);
    Injector::paste(QStringLiteral("secondo"));
    EXPECT_EQ(clipboard(), QStringLiteral("secondo"));
    passRestoreTime();
    EXPECT_EQ(clipboard(), QStringLiteral("prima"));
    EXPECT_EQ(selection(), QStringLiteral("evidenziato"));
    EXPECT_EQ(platform.pasteboard().restores(), 1) << "the first restore was called off";
}

TEST_F(PasteTest, ThreePastesInARowGiveBackWhatTheUserHad) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    for (const char* text : {"uno", "due", "tre"}) Injector::paste(QString::fromLatin1(text));
    passRestoreTime();
    EXPECT_EQ(clipboard(), QStringLiteral("prima"));
}

TEST_F(PasteTest, ASecondPasteNeverRestoresTheFirstOnesText) {
    Injector::paste(newText);
    Injector::paste(QStringLiteral("secondo"));
    passRestoreTime();
    EXPECT_EQ(clipboard(), QStringLiteral("secondo"));
}

TEST_F(PasteTest, ACopyBetweenTwoPastesIsWhatTheUserHas) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    Injector::paste(newText);
    userCopies(QStringLiteral("in mezzo"), newText);
    Injector::paste(QStringLiteral("secondo"));
    passRestoreTime();
    EXPECT_EQ(clipboard(), QStringLiteral("in mezzo"));
    EXPECT_EQ(selection(), QStringLiteral("evidenziato"));
}

TEST_F(PasteTest, TwoPastesInARowGiveBackWhatTheUserHadWhateverTheLineEnds) {
    platform.pasteboard().convertsLineEnds = true;
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    Injector::paste(QStringLiteral("uno\r\ndue"));
    Injector::paste(QStringLiteral("secondo"));
    passRestoreTime();
    EXPECT_EQ(clipboard(), QStringLiteral("prima"));
    EXPECT_EQ(selection(), QStringLiteral("evidenziato"));
}

TEST_F(PasteTest, APasteThatNobodyReadsStaysOnThePasteboard) {
    platform.pasteboard().tellsReadings = true;
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    EXPECT_EQ(Injector::paste(newText), Injector::Outcome::LeftOnClipboard);
    passRestoreTime();
    EXPECT_EQ(clipboard(), newText);
    EXPECT_EQ(platform.pasteboard().restores(), 0);
}

TEST_F(PasteTest, APasteboardThatTakesNothingGetsNoShortcutAndTheTextIsLost) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    platform.pasteboard().refuses = true;
    EXPECT_EQ(Injector::paste(newText), Injector::Outcome::Lost);
    EXPECT_TRUE(platform.keyboard().strokes().isEmpty()) << "it would paste what the user had copied";
    passRestoreTime();
    EXPECT_EQ(clipboard(), QStringLiteral("prima"));
}

TEST_F(PasteTest, ATextThatIsGoneFromThePasteboardIsPutThereAgain) {
    platform.pasteboard().tellsReadings = true;
    platform.keyboard().beforeStroke = [this] { platform.pasteboard().selectionTaken({}); };
    EXPECT_EQ(Injector::paste(newText), Injector::Outcome::LeftOnClipboard);
    EXPECT_EQ(clipboard(), newText);
    platform.keyboard().beforeStroke = [this] {
        platform.pasteboard().selectionTaken({});
        platform.pasteboard().refuses = true;
    };
    EXPECT_EQ(Injector::paste(newText), Injector::Outcome::Lost);
}

TEST_F(PasteTest, APasteIsDeliveredWhenItIsRead) {
    platform.pasteboard().tellsReadings = true;
    platform.pasteboard().readings = 7;
    Clock::setScale(5);  // the receiver may come to its turn late
    std::thread receiver([this] {
        while (platform.keyboard().strokes().isEmpty()) std::this_thread::yield();
        ++platform.pasteboard().readings;
    });
    EXPECT_EQ(Injector::paste(newText), Injector::Outcome::Delivered);
    receiver.join();
}

TEST_F(PasteTest, TheEndOfTheProgramPutsBackWhatWasThere) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    EXPECT_EQ(Injector::paste(newText), Injector::Outcome::Delivered);
    Clock::interruptAll();
    Injector::finishRestore();
    EXPECT_EQ(clipboard(), QStringLiteral("prima"));
    EXPECT_EQ(selection(), QStringLiteral("evidenziato"));
    EXPECT_EQ(platform.pasteboard().restores(), 1);
    Injector::finishRestore();
    EXPECT_EQ(platform.pasteboard().restores(), 1) << "once";
    Clock::resume();
    passRestoreTime();
    EXPECT_EQ(platform.pasteboard().restores(), 1) << "nor when its time comes";
}

TEST_F(PasteTest, WithoutKeysTheTextStaysForTheUserToPaste) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    platform.keyboard().canSendShortcuts = false;
    Injector::paste(newText);
    passRestoreTime();
    EXPECT_EQ(clipboard(), newText);
    EXPECT_TRUE(platform.keyboard().strokes().isEmpty());
}

TEST_F(PasteTest, TheEndOfTheProgramSendsNoShortcut) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    Clock::interruptAll();
    EXPECT_EQ(Injector::paste(newText), Injector::Outcome::CutOff);
    EXPECT_TRUE(platform.keyboard().strokes().isEmpty());
    Injector::finishRestore();
    EXPECT_EQ(clipboard(), QStringLiteral("prima"));
}

TEST_F(PasteTest, AShortcutThatWasSentAtTheEndOfTheProgramIsDelivered) {
    userCopies(QStringLiteral("prima"), QStringLiteral("evidenziato"));
    platform.keyboard().beforeStroke = [] { Clock::interruptAll(); };
    EXPECT_EQ(Injector::paste(newText), Injector::Outcome::Delivered);
    Injector::finishRestore();
    EXPECT_EQ(clipboard(), QStringLiteral("prima"));
}

}  // namespace
}  // namespace parlivo
