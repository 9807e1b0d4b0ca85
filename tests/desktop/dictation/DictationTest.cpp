// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "support/PresetKeys.h"
#include "support/XServer.h"

#include <QClipboard>
#include <QGuiApplication>

#include <thread>

namespace parlivo::desktop {
namespace {

const QString recogniserUrl = QStringLiteral("http://127.0.0.1:8765/");

/// A whole dictation in which only the voice is a stand-in.
class WholeDictation : public ProgramTest, public testing::WithParamInterface<Receiver::Kind> {};

TEST_P(WholeDictation, WhatIsSpokenIsTyped) {
    home::provideModels();
    home::settle();
    const Program program;
    const Receiver receiver(GetParam());
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(Program::waitUntilServed(recogniserUrl));

    dictate(program, phrase(QStringLiteral("s04")));
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("Perché non vieni con noi?"), engineTimeout))
        << qPrintable(receiver.text());
    expectNothingLeft(program);
    expectStates(program, wholeDictation);
    EXPECT_TRUE(home::waitForCount(1));
}

INSTANTIATE_TEST_SUITE_P(AllReceivers, WholeDictation,
                         testing::Values(Receiver::Kind::Xterm, Receiver::Kind::Gtk3, Receiver::Kind::Gtk4,
                                         Receiver::Kind::Qt, Receiver::Kind::Chromium),
                         [](const auto& kind) { return nameOf(kind.param); });

class DictationTest : public ProgramTest {};

TEST_F(DictationTest, WithADictionaryOfTenThousandTermsTheRealEngineStillAnswers) {
    home::provideModels();
    QString terms;
    for (int i = 0; i < 10'000; ++i) terms += QStringLiteral("termine%1\n").arg(i);
    home::settle({{QStringLiteral("dictionary"), terms}});
    const Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    dictate(program, phrase(QStringLiteral("s05")));
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("La città è molto bella."), engineTimeout))
        << qPrintable(receiver.text()) << qPrintable(program.statusText());
}

TEST_F(DictationTest, DictatedTextIsInNoFileAfterwards) {
    home::provideModels();
    home::settle();
    const Program program;
    ASSERT_TRUE(program.waitUntilUp());
    {
        // The receiver's own file is gone with it.
        const Receiver receiver(Receiver::Kind::Xterm);
        dictate(program, phrase(QStringLiteral("s16")));
        ASSERT_TRUE(receiver.waitForText(QStringLiteral("Buona notte e sogni d'oro."), engineTimeout))
            << qPrintable(receiver.text());
        expectNothingLeft(program);
    }
    EXPECT_TRUE(home::log().contains(QStringLiteral("iniezione completata (26 caratteri)")))
        << qPrintable(home::log());
    EXPECT_EQ(home::filesWith("sogni d'oro"), QStringList());
    for (const QString& process : QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")})) {
        QFile commandLine(QStringLiteral("/proc/%1/cmdline").arg(process));
        if (!commandLine.open(QIODevice::ReadOnly)) continue;
        EXPECT_FALSE(commandLine.readAll().contains("sogni")) << qPrintable(process);
    }
}

TEST_F(DictationTest, InToggleModeOnePressStartsAndTheNextStops) {
    home::settle({{QStringLiteral("dictationMode"), QStringLiteral("toggle")}});
    StubRecogniser stub(QStringLiteral("acceso e spento"));
    const Program program;
    const Receiver receiver(Receiver::Kind::Xterm);
    ASSERT_TRUE(program.waitUntilUp());

    dictateSilence(program);
    letPass(std::chrono::milliseconds(200));
    EXPECT_EQ(program.state(), QStringLiteral("recording")) << "the release must not end it";
    press();
    release();
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("acceso e spento"))) << qPrintable(receiver.text());
    expectNothingLeft(program);
}

TEST_F(DictationTest, AnUnknownModeIsNotEndedByAKeyUntilTheModeIsChanged) {
    home::settle({{QStringLiteral("dictationMode"), QStringLiteral("hold")}});
    StubRecogniser stub(QStringLiteral("finalmente"));
    const Program program;
    const Receiver receiver(Receiver::Kind::Xterm);
    ASSERT_TRUE(program.waitUntilUp());

    for (int i = 0; i < 3; ++i) dictateSilence(program);
    expectStates(program, {QStringLiteral("recording")});
    EXPECT_EQ(stub.recordings(), 0U);
    home::set(QStringLiteral("dictationMode"), QStringLiteral("ptt"));
    dictateSilence(program);
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("finalmente"))) << qPrintable(receiver.text());
    expectNothingLeft(program);
}

TEST_F(DictationTest, TheKeyDoesNothingWhileTheProgramIsBusy) {
    const QString text = QString(60, QLatin1Char('a'));
    home::settle({{QStringLiteral("typingSpeed"), QStringLiteral("natural")}});
    StubRecogniser stub;
    StubReply slow = StubReply::json({{QStringLiteral("text"), text}});
    slow.manner = StubReply::Manner::OneByOne;
    slow.pause = std::chrono::milliseconds(5);
    stub.answer(slow);
    const Program program;
    const Receiver receiver(Receiver::Kind::Xterm);
    ASSERT_TRUE(program.waitUntilUp());

    dictateSilence(program);
    ASSERT_TRUE(stub.waitForRequests("/inference", 1));
    ASSERT_TRUE(program.waitForState(QStringLiteral("transcribing")));
    press();
    release();
    ASSERT_TRUE(waitFor([&] { return receiver.text().size() > 2; }));
    keyboard_.tap(Key::leftShift);
    press();
    release();
    EXPECT_TRUE(receiver.waitForText(text)) << qPrintable(receiver.text());
    expectNothingLeft(program);
    EXPECT_EQ(stub.recordings(), 1U);
    EXPECT_EQ(program.states().count(QStringLiteral("recording")), 1);
}

TEST_F(DictationTest, AShortPressStartsNoDictation) {
    constexpr std::chrono::milliseconds tap{290};
    constexpr int attempts = 10;
    const QStringList nothing{QStringLiteral("recording"), QStringLiteral("idle")};
    home::settle();
    StubRecogniser stub(QStringLiteral("di troppo"));
    Program program;
    ASSERT_TRUE(program.waitUntilUp());

    std::size_t before = 0;
    // On a busy machine the fingers, or the program that notices them, may be too late for a tap.
    for (int attempt = 0; attempt < attempts && program.states() != nothing; ++attempt) {
        before = stub.recordings();
        program.forgetStates();
        const auto start = std::chrono::steady_clock::now();
        press();
        std::this_thread::sleep_until(start + tap);
        keyboard_.release(Key::space);
        keyboard_.release(Key::leftAlt);
        ASSERT_TRUE(waitFor([&] { return program.states().endsWith(QStringLiteral("idle")); }));
    }

    expectStates(program, nothing);
    EXPECT_EQ(stub.recordings(), before);
    EXPECT_EQ(program.statusText(), QStringLiteral("Pronto — tieni premuto Alt+Spazio per dettare"));
    expectNothingLeft(program);
}

/// How a text of the stub gets into the receiver: by keys, which leave the clipboard alone, or through it.
class DeliveryTest : public ProgramTest {
  protected:
    DeliveryTest() {
        QObject::connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, &context_,
                         [this] { ++clipboardChanges_; });
    }

    void deliver(const QString& text) {
        const StubRecogniser stub(text);
        const Program program;
        const Receiver receiver(Receiver::Kind::Qt);
        ASSERT_TRUE(program.waitUntilUp());
        dictateSilence(program);
        EXPECT_TRUE(receiver.waitForText(text)) << receiver.text().size() << " characters";
        expectNothingLeft(program);
    }

    QObject context_;
    int clipboardChanges_ = 0;
};

QString prose(qsizetype length) {
    const QString sentence = QStringLiteral("Perché no? Così è più bello. ");
    return sentence.repeated(length / sentence.size() + 1).left(length - 1) + QLatin1Char('.');
}

TEST_F(DeliveryTest, FifteenHundredCharactersAreTyped) {
    home::settle();
    deliver(prose(1500));
    EXPECT_EQ(clipboardChanges_, 0);
}

TEST_F(DeliveryTest, OneCharacterMoreIsPasted) {
    home::settle();
    deliver(prose(1501));
    EXPECT_GT(clipboardChanges_, 0);
}

TEST_F(DeliveryTest, InstantPastesASingleWord) {
    home::settle({{QStringLiteral("typingSpeed"), QStringLiteral("instant")}});
    deliver(QStringLiteral("subito"));
    EXPECT_GT(clipboardChanges_, 0);
}

TEST_F(DeliveryTest, AHundredThousandCharactersArrive) {
    home::settle();
    deliver(prose(100'000));
}

/// The key of each preset starts, and the usual one no longer does.
class PresetTest : public ProgramTest, public testing::WithParamInterface<Preset> {};

TEST_P(PresetTest, ItsKeyAndNoOtherDictates) {
    const Chord chord = chordOf(GetParam());
    home::settle({{QStringLiteral("hotkeyPreset"), GetParam().id}});
    StubRecogniser stub(QStringLiteral("altro tasto"));
    const Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());

    press(optionSpace);
    release(optionSpace);
    press(chord);
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
    letPass(std::chrono::milliseconds(400));
    release(chord);
    EXPECT_TRUE(waitFor([&] { return receiver.text().endsWith(QStringLiteral("altro tasto")); }))
        << qPrintable(receiver.text());
    expectNothingLeft(program);
    EXPECT_EQ(program.states().count(QStringLiteral("recording")), 1);
}

INSTANTIATE_TEST_SUITE_P(Presets, PresetTest,
                         testing::ValuesIn(HotKeyManager::presets().begin() + 1,
                                           HotKeyManager::presets().end()),
                         [](const auto& preset) {
                             return QString(preset.param.id).remove(QLatin1Char('-')).toStdString();
                         });

/// Another program's claim to the key, as a window manager makes it.
class ForeignGrab {
  public:
    explicit ForeignGrab(const Chord& chord) : connection_(xcb_connect(nullptr, nullptr)) {
        auto* const c = connection_.get();
        const auto cookie = xcb_grab_key_checked(c, 1, rootOf(c), XCB_MOD_MASK_1, chord.back(),
                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        EXPECT_EQ(xcb_request_check(c, cookie), nullptr);
    }

  private:
    x11::ConnectionHandle connection_;
};

TEST_F(DictationTest, WhereAWindowManagerHoldsTheKeyBothKeyAndBusDictate) {
    home::settle();
    StubRecogniser stub;
    const ForeignGrab grab(optionSpace);
    const Program program;
    const Receiver receiver(Receiver::Kind::Xterm);
    ASSERT_TRUE(program.waitUntilUp());

    expectDictation(program, receiver, stub, QStringLiteral("col tasto"));

    stub.setTranscript(QStringLiteral(" e senza"));
    EXPECT_TRUE(program.invoke("Press"));
    EXPECT_EQ(program.state(), QStringLiteral("recording"));
    letPass(std::chrono::milliseconds(400));
    EXPECT_TRUE(program.invoke("Release"));
    EXPECT_TRUE(waitFor([&] { return receiver.text().endsWith(QStringLiteral("senza")); }))
        << qPrintable(receiver.text());
    expectNothingLeft(program);
    EXPECT_EQ(program.states().count(QStringLiteral("recording")), 2);
    EXPECT_FALSE(home::log().contains(QStringLiteral("registrazione hotkey fallita")));
}

}  // namespace
}  // namespace parlivo::desktop
