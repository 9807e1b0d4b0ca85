// SPDX-License-Identifier: MIT
#include "input/Injector.h"
#include "platform/macos/MacTest.h"
#include "platform/macos/fakes/FakeObjects.h"
#include "platform/macos/fakes/FakeQuartz.h"
#include "platform/macos/input/MacPasteboard.h"
#include "platform/macos/input/QuartzKeyboardSynthesizer.h"

#include <QCoreApplication>
#include <QTimer>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

const QString plain = QStringLiteral("public.utf8-plain-text");
const QString concealed = QStringLiteral("org.nspasteboard.ConcealedType");

QStringList put(const QString& text) {
    return {QStringLiteral("clear"), QStringLiteral("set «%1» as %2").arg(text, plain)};
}

QStringList putSecretly(const QString& text) {
    return put(text) << QStringLiteral("set «» as %1").arg(concealed);
}

class PasteboardTest : public MacTest {
  protected:
    PasteboardTest() { mac::renewWorld(); }

    static QString text() { return mac::world().pasteboard[plain]; }
    /// Another program puts something there.
    static void takeOver(const std::map<QString, QString>& contents) {
        mac::world().pasteboard = contents;
        ++mac::world().changeCount;
    }

    MacPasteboard pasteboard;
};

TEST_F(PasteboardTest, ReadsThePlainTextAndNothingElse) {
    EXPECT_TRUE(pasteboard.texts().isEmpty());
    takeOver({{QStringLiteral("public.png"), QStringLiteral("…")}});
    EXPECT_TRUE(pasteboard.texts().isEmpty());
    takeOver({{plain, QStringLiteral("città 😀")}});
    EXPECT_EQ(pasteboard.texts(), (PasteboardTexts{{PasteboardPlace::Clipboard, QStringLiteral("città 😀")}}));
}

TEST_F(PasteboardTest, AnEmptyTextIsAText) {
    takeOver({{plain, QString()}});
    EXPECT_EQ(pasteboard.texts().size(), 1);
}

TEST_F(PasteboardTest, PutsTextAfterClearing) {
    EXPECT_TRUE(pasteboard.setText(QStringLiteral("nuovo"), Pasteboard::History::Keep));
    EXPECT_EQ(mac::takeCalls(), put(QStringLiteral("nuovo")));
}

TEST_F(PasteboardTest, TellsThatTheSystemHasNotTakenAText) {
    mac::world().refusesPasteboard = true;
    EXPECT_FALSE(pasteboard.setText(QStringLiteral("nuovo"), Pasteboard::History::Keep));
}

TEST_F(PasteboardTest, MarksWhatNoHistoryShouldKeep) {
    EXPECT_TRUE(pasteboard.setText(QStringLiteral("di passaggio"), Pasteboard::History::Omit));
    EXPECT_EQ(mac::takeCalls(), putSecretly(QStringLiteral("di passaggio")));
    EXPECT_TRUE(pasteboard.setText(QStringLiteral("resta"), Pasteboard::History::Keep));
    EXPECT_FALSE(mac::world().pasteboard.contains(concealed)) << "the mark of the text before";
}

TEST_F(PasteboardTest, RestoresOnlyWhatIsStillOurs) {
    const PasteboardTexts before{{PasteboardPlace::Clipboard, QStringLiteral("prima")}};
    EXPECT_TRUE(pasteboard.setText(QStringLiteral("nostro"), Pasteboard::History::Omit));
    pasteboard.restore(before);
    EXPECT_EQ(text(), QStringLiteral("prima"));
    EXPECT_FALSE(mac::world().pasteboard.contains(concealed)) << "the user's own text is no secret of ours";

    EXPECT_TRUE(pasteboard.setText(QStringLiteral("nostro"), Pasteboard::History::Omit));
    takeOver({{plain, QStringLiteral("nostro")}});  // the same text, but copied by the user
    pasteboard.restore(before);
    EXPECT_EQ(text(), QStringLiteral("nostro"));
}

TEST_F(PasteboardTest, RestoresNothingThatWasNotThere) {
    EXPECT_TRUE(pasteboard.setText(QStringLiteral("nostro"), Pasteboard::History::Omit));
    mac::takeCalls();
    pasteboard.restore({});
    EXPECT_TRUE(mac::takeCalls().isEmpty());
}

/// The rules of pasting through the real adapters of keyboard and pasteboard.
class PasteTest : public PasteboardTest {
  protected:
    PasteTest() {
        platform.keyboard().real = &keyboard;
        platform.pasteboard().real = &pasteboard;
        Clock::setScale(0.02);
    }

    static QStringList commandV() {
        return {QStringLiteral("source 0"), QStringLiteral("down 9 flags 1048576 at 0"),
                QStringLiteral("up 9 flags 1048576 at 0")};
    }

    static void passRestoreTime() {
        bool passed = false;
        QTimer::singleShot(Clock::scaled(700ms), [&passed] { passed = true; });
        while (!passed) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }

    QuartzKeyboardSynthesizer keyboard;
};

TEST_F(PasteTest, SetsTheTextPressesCommandVAndRestoresTheTextBefore) {
    takeOver({{plain, QStringLiteral("prima")}});
    Injector::paste(QStringLiteral("dettato"));
    EXPECT_EQ(mac::takeCalls(), putSecretly(QStringLiteral("dettato")) + commandV());
    passRestoreTime();
    EXPECT_EQ(mac::takeCalls(), put(QStringLiteral("prima")));
}

TEST_F(PasteTest, AnImageIsLostAndTheTextStays) {
    takeOver({{QStringLiteral("public.png"), QStringLiteral("…")}});
    Injector::paste(QStringLiteral("dettato"));
    passRestoreTime();
    EXPECT_EQ(text(), QStringLiteral("dettato"));
}

TEST_F(PasteTest, WhatTheUserCopiesMeanwhileStays) {
    takeOver({{plain, QStringLiteral("prima")}});
    Injector::paste(QStringLiteral("dettato"));
    takeOver({{plain, QStringLiteral("copiato")}});
    passRestoreTime();
    EXPECT_EQ(text(), QStringLiteral("copiato"));
}

}  // namespace
}  // namespace parlivo
