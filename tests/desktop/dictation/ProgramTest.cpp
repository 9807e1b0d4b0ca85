// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"

#include "desktop/indicators/Screen.h"
#include "platform/linux/x11/NoOpKey.h"

#include <QJsonObject>

#include <algorithm>
#include <iostream>

namespace parlivo::desktop {

namespace {

constexpr quint16 recogniserPort = 8765;
constexpr std::chrono::milliseconds longEnough{400};
/// Fingers do not leave two keys in the same moment, and this is how long they may take; a program that is
/// busy with other things has time to prevent the modifier from opening a menu.
constexpr std::chrono::milliseconds betweenFingers{30};
constexpr std::chrono::milliseconds slowestFingers{500};

/// Whether the card that floats over the windows during a recording is on the screen.
bool isCardShown() {
    return Screen().findWindow(QSize(240, 84)).has_value();
}

}  // namespace

const QStringList wholeDictation{QStringLiteral("recording"), QStringLiteral("transcribing"),
                                 QStringLiteral("cleaning"), QStringLiteral("typing"),
                                 QStringLiteral("idle")};

StubRecogniser::StubRecogniser() : StubServer(recogniserPort) {
    on("/", StubReply::body("<html>", 200, "text/html"));
}

void StubRecogniser::setTranscript(const QString& text) {
    answer(StubReply::json({{QStringLiteral("text"), text}}));
}

void ProgramTest::TearDown() {
    if (HasFailure()) std::cerr << qPrintable(home::log());
}

void ProgramTest::press(const Chord& chord) {
    for (const auto key : chord) keyboard_.press(key);
}

void ProgramTest::release(const Chord& chord) {
    const bool held = std::ranges::all_of(chord, [this](auto key) { return keyboard_.isDown(key); });
    keys_.forget();
    keyboard_.release(chord.back());
    letPass(betweenFingers);
    if (held) keys_.waitFor(x11::noOpKey, slowestFingers - betweenFingers);
    for (auto modifier = chord.rbegin() + 1; modifier != chord.rend(); ++modifier) {
        keyboard_.release(*modifier);
        letPass(betweenFingers);
    }
}

void ProgramTest::startRecording(const Program& program) {
    press();
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording"))) << qPrintable(program.statusText());
    const QJsonValue overlay = home::settings().value(QLatin1String("overlayEnabled"));
    if (!overlay.isUndefined() && !overlay.toBool()) return;
    EXPECT_TRUE(waitFor(isCardShown)) << "no card while the program records";
}

void ProgramTest::dictateSilence(const Program& program) {
    startRecording(program);
    letPass(longEnough);
    release();
}

void ProgramTest::dictate(const Program& program, const demo::Phrase& phrase) {
    const Voice voice(phrase);
    startRecording(program);
    voice.speak();
    release();
}

void ProgramTest::expectComplaint(const Program& program, const QString& complaint) {
    dictateSilence(program);
    const QString line = QStringLiteral("⚠️ ") + complaint;
    EXPECT_TRUE(waitFor([&] { return program.statusText() == line; })) << qPrintable(program.statusText());
    expectNothingLeft(program);
}

void ProgramTest::expectDictation(const Program& program, const Receiver& receiver, StubRecogniser& stub,
                                  const QString& text) {
    const QString before = receiver.text();
    stub.setTranscript(text);
    dictateSilence(program);
    EXPECT_TRUE(receiver.waitForText(before + text)) << qPrintable(receiver.text()) << '\n'
                                                     << qPrintable(program.statusText());
    expectNothingLeft(program);
}

void ProgramTest::expectStates(const Program& program, const QStringList& states) {
    // The last signal may still be on its way.
    EXPECT_TRUE(waitFor([&] { return program.states() == states; }))
        << qPrintable(program.states().join(QLatin1Char(' ')));
}

void ProgramTest::expectNothingLeft(const Program& program) {
    EXPECT_TRUE(program.waitForState(QStringLiteral("idle"))) << qPrintable(program.state());
    EXPECT_TRUE(waitFor([] { return home::recordings().isEmpty(); }));
    EXPECT_TRUE(waitFor([] { return recordingStreams().isEmpty(); }));
    EXPECT_TRUE(waitFor([] { return !isCardShown(); })) << "the card stays on the screen";
}

const demo::Phrase& ProgramTest::phrase(const QString& id) {
    const auto& all = demo::phrases();
    return *std::ranges::find_if(all, [&](const demo::Phrase& phrase) { return phrase.id == id; });
}

}  // namespace parlivo::desktop
