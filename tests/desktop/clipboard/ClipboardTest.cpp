// SPDX-License-Identifier: MIT
#include "input/Injector.h"
#include "support/Clock.h"
#include "support/MainQueue.h"
#include "support/Pipeline.h"
#include "support/Receiver.h"
#include "support/SelectionOwner.h"
#include "support/TypingPlatform.h"

#include <QGuiApplication>
#include <QProcess>

#include <gtest/gtest.h>

#include <memory>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using Manner = SelectionOwner::Manner;

constexpr auto clipboard = PasteboardPlace::Clipboard;
constexpr auto primary = PasteboardPlace::PrimarySelection;
const QString dictated = QStringLiteral("Perché no? “Sì” — 12 €");

/// What a program of another kind gets when it asks; empty when there is nothing of that type.
QByteArray seenByOthers(PasteboardPlace place, const char* type = "UTF8_STRING") {
    QProcess xclip;
    xclip.start(QStringLiteral("xclip"),
                {QStringLiteral("-out"), QStringLiteral("-selection"),
                 place == clipboard ? QStringLiteral("clipboard") : QStringLiteral("primary"),
                 QStringLiteral("-target"), QString::fromLatin1(type)});
    // The asked one may be this program, which must go on meanwhile.
    if (!waitFor([&xclip] { return xclip.state() == QProcess::NotRunning; })) return "no answer";
    return xclip.readAllStandardOutput();
}

class ClipboardTest : public testing::Test {
  protected:
    PasteboardTexts texts() {
        PasteboardTexts read;
        EXPECT_TRUE(pipeline_.run([&read] { read = Platform::current().pasteboard().texts(); }));
        return read;
    }
    void setText(const QString& text, Pasteboard::History history) {
        bool taken = false;
        EXPECT_TRUE(pipeline_.run([&] { taken = Platform::current().pasteboard().setText(text, history); }));
        EXPECT_TRUE(taken);
    }
    void restore(const PasteboardTexts& before) {
        EXPECT_TRUE(pipeline_.run([&] { Platform::current().pasteboard().restore(before); }));
    }
    void paste(const QString& text) {
        EXPECT_TRUE(pipeline_.run([&] { Injector::paste(text); }));
    }

    static bool comesToHold(PasteboardPlace place, const QByteArray& text) {
        return waitFor([&] { return seenByOthers(place) == text; });
    }

    TypingProgram program_;
    Pipeline pipeline_;
};

TEST_F(ClipboardTest, ReadsBothPlacesOfOtherPrograms) {
    const SelectionOwner editor(clipboard, Manner::Text, "copiato è");
    const SelectionOwner terminal(primary, Manner::Text, "evidenziato");
    EXPECT_EQ(texts(), (PasteboardTexts{{clipboard, QStringLiteral("copiato è")},
                                        {primary, QStringLiteral("evidenziato")}}));
}

TEST_F(ClipboardTest, ReadsOldProgramsToo) {
    const SelectionOwner owner(clipboard, Manner::Latin1, "citt\xe0");
    EXPECT_EQ(texts().value(clipboard), QStringLiteral("città"));
}

TEST_F(ClipboardTest, ReadsALongTextThatComesInPieces) {
    const QByteArray text = QByteArray("sequenza è lunga ").repeated(200'000);
    const SelectionOwner owner(clipboard, Manner::Incremental, text);
    EXPECT_EQ(texts().value(clipboard).toUtf8(), text);
}

TEST_F(ClipboardTest, APlaceWithoutTextIsAbsent) {
    EXPECT_TRUE(texts().isEmpty());
    const SelectionOwner owner(clipboard, Manner::Image, "\x89PNG");
    EXPECT_TRUE(texts().isEmpty());
}

TEST_F(ClipboardTest, BytesOfAnotherTypeAreNoText) {
    setText(dictated, Pasteboard::History::Keep);
    const SelectionOwner owner(clipboard, Manner::SameForAll, "\x89PNG");
    const SelectionOwner other(primary, Manner::Text, "evidenziato");
    EXPECT_EQ(texts(), (PasteboardTexts{{primary, QStringLiteral("evidenziato")}}));
}

TEST_F(ClipboardTest, ReadsWhatThisProgramPutThere) {
    setText(dictated, Pasteboard::History::Keep);
    EXPECT_EQ(texts(), (PasteboardTexts{{clipboard, dictated}, {primary, dictated}}));
}

class BadOwner : public ClipboardTest, public testing::WithParamInterface<Manner> {};

TEST_P(BadOwner, DoesNotBlockAndCountsAsEmpty) {
    const SelectionOwner bad(clipboard, GetParam(), QByteArray(500'000, 'x'));
    const SelectionOwner good(primary, Manner::Text, "evidenziato");
    const Lifetime lifetime;
    bool mainThreadWentOn = false;
    pipeline_.start([&] {
        MainQueue::after(100ms, lifetime.token(), [&] { mainThreadWentOn = !pipeline_.isDone(); });
        const auto read = Platform::current().pasteboard().texts();
        EXPECT_EQ(read, (PasteboardTexts{{primary, QStringLiteral("evidenziato")}}));
    });
    ASSERT_TRUE(pipeline_.finish());
    EXPECT_TRUE(mainThreadWentOn);
}

INSTANTIATE_TEST_SUITE_P(All, BadOwner, testing::Values(Manner::Silent, Manner::Breaking));

TEST_F(ClipboardTest, GivesItsTextToOthersMarkedForTheirHistories) {
    setText(dictated, Pasteboard::History::Omit);
    for (const auto place : {clipboard, primary}) {
        EXPECT_EQ(seenByOthers(place), dictated.toUtf8());
        EXPECT_EQ(seenByOthers(place, "x-kde-passwordManagerHint"), "secret");
    }
    setText(dictated, Pasteboard::History::Keep);
    EXPECT_EQ(seenByOthers(clipboard, "x-kde-passwordManagerHint"), "");
}

TEST_F(ClipboardTest, RestoresEachPlaceOnlyWhileItIsOurs) {
    const PasteboardTexts before{{clipboard, QStringLiteral("prima")},
                                 {primary, QStringLiteral("evidenziato")}};
    setText(dictated, Pasteboard::History::Omit);
    const SelectionOwner other(clipboard, Manner::Text, "nuovo");
    restore(before);
    EXPECT_TRUE(other.ownsSelection());
    EXPECT_EQ(seenByOthers(clipboard), "nuovo");
    EXPECT_EQ(seenByOthers(primary), "evidenziato");
    EXPECT_EQ(seenByOthers(primary, "x-kde-passwordManagerHint"), "secret") << "it may have been one before";
}

TEST_F(ClipboardTest, RestoresNothingOverWhatTheUserCopiedInOurOwnWindows) {
    setText(dictated, Pasteboard::History::Omit);
    QGuiApplication::clipboard()->setText(QStringLiteral("dalle impostazioni"));
    restore({{clipboard, QStringLiteral("prima")}});
    EXPECT_EQ(seenByOthers(clipboard), "dalle impostazioni");
}

TEST_F(ClipboardTest, AskingAfterTheEndOfTheProgramReturns) {
    const SelectionOwner owner(clipboard, Manner::Silent);
    pipeline_.start([] { Platform::current().pasteboard().texts(); });
    Clock::interruptAll();
    EXPECT_TRUE(pipeline_.finish());
    Clock::resume();
}

class PasteInto : public ClipboardTest, public testing::WithParamInterface<Receiver::Kind> {};

TEST_P(PasteInto, ArrivesAndThePlacesGetTheirTextsBack) {
    const SelectionOwner editor(clipboard, Manner::Text, "copiato");
    const SelectionOwner terminal(primary, Manner::Text, "evidenziato");
    const Receiver receiver(GetParam());
    paste(dictated);
    EXPECT_TRUE(receiver.waitForText(dictated)) << receiver.text().toStdString();
    EXPECT_TRUE(comesToHold(clipboard, "copiato"));
    EXPECT_TRUE(comesToHold(primary, "evidenziato"));
}

INSTANTIATE_TEST_SUITE_P(All, PasteInto,
                         testing::Values(Receiver::Kind::Xterm, Receiver::Kind::Gtk3, Receiver::Kind::Gtk4,
                                         Receiver::Kind::Qt, Receiver::Kind::Chromium),
                         [](const auto& kind) { return nameOf(kind.param); });

TEST_F(ClipboardTest, ThePastedTextReplacesAnImage) {
    const SelectionOwner editor(clipboard, Manner::Image, "\x89PNG");
    const SelectionOwner terminal(primary, Manner::Text, "evidenziato");
    const Receiver receiver(Receiver::Kind::Qt);
    paste(dictated);
    EXPECT_TRUE(comesToHold(primary, "evidenziato")) << "the time of restoring has come";
    EXPECT_EQ(seenByOthers(clipboard), dictated.toUtf8());
}

TEST_F(ClipboardTest, TwoPastesInARowArriveAndTheUsersTextComesBack) {
    const SelectionOwner editor(clipboard, Manner::Text, "copiato");
    const Receiver receiver(Receiver::Kind::Xterm);
    ASSERT_TRUE(pipeline_.run([] {
        Injector::paste(QStringLiteral("uno "));
        // The receiver fetches the text when it reads the keys; a second text would replace it before.
        Clock::sleepFor(200ms);
        Injector::paste(QStringLiteral("due"));
    }));
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("uno due"))) << receiver.text().toStdString();
    EXPECT_TRUE(comesToHold(clipboard, "copiato"));
}

TEST_F(ClipboardTest, AProgramThatEndsRightAfterAPastePutsTheUsersTextBack) {
    const SelectionOwner editor(clipboard, Manner::Text, "copiato");
    const SelectionOwner terminal(primary, Manner::Text, "evidenziato");
    const Receiver receiver(Receiver::Kind::Qt);
    paste(dictated);
    Clock::interruptAll();
    Injector::finishRestore();
    EXPECT_TRUE(comesToHold(clipboard, "copiato"));
    EXPECT_TRUE(comesToHold(primary, "evidenziato"));
    Clock::resume();
    EXPECT_TRUE(receiver.waitForText(dictated)) << qPrintable(receiver.text());
}

TEST_F(ClipboardTest, WhatTheUserCopiesRightAfterAPasteStays) {
    auto editor = std::make_unique<SelectionOwner>(clipboard, Manner::Text, "copiato");
    const SelectionOwner terminal(primary, Manner::Text, "evidenziato");
    const Receiver receiver(Receiver::Kind::Qt);
    paste(dictated);
    ASSERT_TRUE(receiver.waitForText(dictated)) << receiver.text().toStdString();
    const SelectionOwner other(clipboard, Manner::Text, "nuovo");
    EXPECT_TRUE(comesToHold(primary, "evidenziato"));
    EXPECT_TRUE(other.ownsSelection());
}

TEST_F(ClipboardTest, AStalledOwnerDelaysAPasteButDoesNotPreventIt) {
    const SelectionOwner editor(clipboard, Manner::Silent);
    const Receiver receiver(Receiver::Kind::Gtk3);
    paste(dictated);
    EXPECT_TRUE(receiver.waitForText(dictated)) << receiver.text().toStdString();
}

}  // namespace
}  // namespace parlivo::desktop
