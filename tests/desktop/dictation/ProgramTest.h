// SPDX-License-Identifier: MIT
#pragma once

#include "Demo.h"
#include "desktop/dictation/Home.h"
#include "desktop/dictation/Program.h"
#include "desktop/dictation/Sound.h"
#include "support/KeyWatch.h"
#include "support/Keyboard.h"
#include "support/Receiver.h"
#include "support/StubServer.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <vector>

namespace parlivo::desktop {

/// The states of a dictation that goes well.
extern const QStringList wholeDictation;

using Chord = std::vector<xcb_keycode_t>;
inline const Chord optionSpace{Key::leftAlt, Key::space};

/// How long the real engines may take on a machine that is busy with everything else: their threads wait for
/// each other by spinning.
inline constexpr std::chrono::seconds engineTimeout{100};

/// A stand-in for a running whisper-server: the program takes whatever answers on the port for one.
class StubRecogniser : public StubServer {
  public:
    StubRecogniser();
    explicit StubRecogniser(const QString& text) : StubRecogniser() { setTranscript(text); }
    /// What it answers to every recording from now on.
    void setTranscript(const QString& text);
    void answer(const StubReply& reply) { on("/inference", reply); }
    std::size_t recordings() const { return requests("/inference").size(); }
};

/// The whole program on a private desktop, controlled by the real key and a synthetic voice.
class ProgramTest : public testing::Test {
  protected:
    ProgramTest() { separateSpeakerFromMicrophone(); }
    /// A failed test shows what the program logged.
    void TearDown() override;

    void press(const Chord& chord = optionSpace);
    void release(const Chord& chord = optionSpace);

    /// Presses the key and waits until the program records and shows its card.
    void startRecording(const Program& program);
    /// Holds the key for long enough to count, saying nothing.
    void dictateSilence(const Program& program);
    /// Holds the key while the phrase is spoken.
    void dictate(const Program& program, const demo::Phrase& phrase);
    /// Dictates and expects this error message; then the program is idle again and nothing is left on disk.
    void expectComplaint(const Program& program, const QString& complaint);
    /// Dictates to the stub and expects the text in the receiver: the program works (again).
    void expectDictation(const Program& program, const Receiver& receiver, StubRecogniser& stub,
                         const QString& text);
    /// Exactly these states were signalled since the start, or since they were forgotten.
    static void expectStates(const Program& program, const QStringList& states);
    /// What must hold whenever a dictation is over.
    static void expectNothingLeft(const Program& program);

    static const demo::Phrase& phrase(const QString& id);

    Keyboard keyboard_;
    KeyWatch keys_;
};

}  // namespace parlivo::desktop
