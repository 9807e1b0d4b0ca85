// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "support/SoundServer.h"

namespace parlivo::desktop {
namespace {

const QString noMicrophone =
    QStringLiteral("Impossibile avviare la registrazione: Microfono non disponibile");

/// What can happen to the microphone. Every time the program says so and the next dictation works.
class SoundFault : public ProgramTest {
  protected:
    // The program starts as a member, so its settings must be there before.
    SoundFault() : stub_((home::settle(), QStringLiteral(""))) {}

    void SetUp() override { ASSERT_TRUE(program_.waitUntilUp()); }

    void expectNoMicrophone() {
        press();
        const QString line = QStringLiteral("⚠️ ") + noMicrophone;
        EXPECT_TRUE(waitFor([&] { return program_.statusText() == line; }))
            << qPrintable(program_.statusText());
        release();
        EXPECT_EQ(program_.states(), QStringList());
        EXPECT_EQ(home::recordings(), QStringList());
    }
    void expectRecovery() { expectDictation(program_, receiver_, stub_, QStringLiteral("di nuovo qui")); }

    StubRecogniser stub_;
    Program program_;
    Receiver receiver_{Receiver::Kind::Qt};
};

TEST_F(SoundFault, NoMicrophoneButALoudspeakersMonitor) {
    soundServer::removeMicrophone();
    expectNoMicrophone();
    soundServer::removeLoudspeaker();
    expectNoMicrophone();
    soundServer::addPair(QStringLiteral("cavo"), QStringLiteral("microfono"));
    soundServer::setDefaultSource(QStringLiteral("microfono"));
    expectRecovery();
}

TEST_F(SoundFault, NoSoundServer) {
    endSoundServer();
    expectNoMicrophone();
    startSoundServer();
    expectRecovery();
}

TEST_F(SoundFault, AMicrophonePulledOutEndsTheRecordingWithWhatItHas) {
    stub_.setTranscript(QStringLiteral("fin qui"));
    press();
    ASSERT_TRUE(program_.waitForState(QStringLiteral("recording")));
    letPass(std::chrono::milliseconds(500));
    soundServer::removeMicrophone();
    EXPECT_TRUE(receiver_.waitForText(QStringLiteral("fin qui"))) << qPrintable(program_.statusText());
    release();
    expectNothingLeft(program_);
    soundServer::addPair(QStringLiteral("altro"), QStringLiteral("microfono"));
    soundServer::setDefaultSource(QStringLiteral("microfono"));
    expectRecovery();
}

TEST_F(SoundFault, ASoundServerThatDiesEndsTheRecordingWithWhatItHas) {
    stub_.setTranscript(QStringLiteral("fin qui"));
    press();
    ASSERT_TRUE(program_.waitForState(QStringLiteral("recording")));
    letPass(std::chrono::milliseconds(500));
    endSoundServer();
    EXPECT_TRUE(receiver_.waitForText(QStringLiteral("fin qui"))) << qPrintable(program_.statusText());
    release();
    EXPECT_TRUE(program_.waitForState(QStringLiteral("idle")));
    EXPECT_EQ(home::recordings(), QStringList());
    startSoundServer();
    expectRecovery();
}

TEST_F(SoundFault, AFrozenSoundServerDoesNotFreezeTheProgram) {
    soundServer::freeze();
    press();
    const QString line = QStringLiteral("⚠️ ") + noMicrophone;
    EXPECT_TRUE(waitFor([&] { return program_.statusText() == line; })) << qPrintable(program_.statusText());
    release();
    soundServer::thaw();
    // Until the server has answered the question that waited for it, recordings are refused.
    EXPECT_TRUE(waitFor([this] {
        press();
        letPass(std::chrono::milliseconds(50));
        const bool records = program_.state() == QStringLiteral("recording");
        release();
        return records;
    })) << qPrintable(program_.statusText());
    EXPECT_TRUE(program_.waitForState(QStringLiteral("idle")));
    expectRecovery();
}

}  // namespace
}  // namespace parlivo::desktop
