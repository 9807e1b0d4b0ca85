// SPDX-License-Identifier: MIT
#include "desktop/sound/Listener.h"
#include "desktop/sound/PulseInterposed.h"
#include "support/SoundServer.h"

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

TEST(SoundServerTest, WithoutAServerThereIsNoMicrophone) {
    soundServer::kill();
    EXPECT_FALSE(microphoneOpens());
    EXPECT_EQ(askedMicrophone(), MicrophoneStatus::Denied);
}

TEST(SoundServerTest, AServerThatNeverAnswersIsNotWaitedFor) {
    soundServer::freeze();
    EXPECT_FALSE(microphoneOpens());
    EXPECT_EQ(askedMicrophone(), MicrophoneStatus::Denied);
    soundServer::thaw();
    EXPECT_TRUE(waitFor(&microphoneOpens));
}

TEST(SoundServerTest, AServerThatFreezesWhileRecordingDoesNotHoldTheEndUp) {
    const Speaker speaker;
    Listener listener;
    ASSERT_TRUE(listener.hearsSound());
    soundServer::freeze();
    const std::size_t heard = listener.frames();
    listener.stop();
    EXPECT_GE(listener.frames(), heard);
    listener.close();
    soundServer::thaw();
}

TEST(SoundServerTest, AMicrophoneThatComesLaterIsFound) {
    soundServer::removeMicrophone();
    EXPECT_FALSE(microphoneOpens()) << "the loudspeaker's monitor is no microphone";
    EXPECT_EQ(askedMicrophone(), MicrophoneStatus::Denied);
    soundServer::removeLoudspeaker();
    EXPECT_FALSE(microphoneOpens()) << "there is no source";
    soundServer::addPair(QStringLiteral("altro"), QStringLiteral("nuovo"));
    soundServer::setDefaultSource(QStringLiteral("nuovo"));
    EXPECT_TRUE(Listener().hears(1));
    EXPECT_EQ(askedMicrophone(), MicrophoneStatus::Authorised);
}

TEST(SoundServerTest, TheOnlyMonitorIsRecordedWhenTheUserNamesIt) {
    soundServer::removeMicrophone();
    EXPECT_FALSE(microphoneOpens());
    qputenv("PULSE_SOURCE", "cavo.monitor");
    EXPECT_TRUE(Listener().hears(1));
    qunsetenv("PULSE_SOURCE");
}

TEST(SoundServerTest, AMonitorThatTheUserChoseIsRecorded) {
    const Speaker speaker;
    soundServer::setDefaultSource(QStringLiteral("cavo.monitor"));
    EXPECT_TRUE(Listener().hearsSound());
}

TEST(SoundServerTest, AMicrophonePulledOutEndsTheRecordingWithWhatItHas) {
    const Speaker speaker;
    Listener listener;
    ASSERT_TRUE(listener.hearsSound() && listener.hears(oneSecond));
    soundServer::removeMicrophone();
    EXPECT_TRUE(waitFor([&] { return listener.interruptions() > 0; }));
    const std::size_t heard = listener.frames();
    letPass(300ms);
    EXPECT_EQ(listener.frames(), heard) << "goes on after the interruption";
    listener.stop();
    EXPECT_EQ(listener.frames(), heard);
    EXPECT_EQ(listener.interruptions(), 1);
}

TEST(SoundServerTest, AMoveThatCannotBeLookedAtEndsTheRecordingWithWhatItHas) {
    soundServer::addPair(QStringLiteral("altro"), QStringLiteral("riserva"));
    soundServer::setDefaultSource(QStringLiteral("microfono"));
    Listener listener;
    ASSERT_TRUE(listener.hears(oneSecond));
    interposed::refuseSourceQuestions = true;
    soundServer::removeMicrophone();
    EXPECT_TRUE(waitFor([&] { return listener.interruptions() > 0; }));
    const std::size_t heard = listener.frames();
    EXPECT_GE(heard, oneSecond);
    listener.stop();
    EXPECT_EQ(listener.frames(), heard);
    interposed::refuseSourceQuestions = false;
}

TEST(SoundServerTest, AnotherMicrophoneTakesOver) {
    soundServer::addPair(QStringLiteral("altro"), QStringLiteral("riserva"));
    soundServer::setDefaultSource(QStringLiteral("microfono"));
    const Speaker speaker(QStringLiteral("altro"));
    Listener listener;
    ASSERT_TRUE(listener.hears(oneSecond));
    soundServer::removeMicrophone();
    EXPECT_TRUE(listener.hearsSound());
    EXPECT_EQ(listener.interruptions(), 0);
}

TEST(SoundServerTest, AServerKilledWhileRecordingEndsTheRecordingWithWhatItHas) {
    Listener listener;
    ASSERT_TRUE(listener.hears(oneSecond));
    soundServer::kill();
    EXPECT_TRUE(waitFor([&] { return listener.interruptions() > 0; }));
    const std::size_t heard = listener.frames();
    listener.stop();
    EXPECT_EQ(listener.frames(), heard);
    EXPECT_EQ(listener.interruptions(), 1);
}

TEST(SoundServerTest, AFailedStartIsNoInterruption) {
    const Opened opened;
    const auto& capture = opened.capture;
    ASSERT_TRUE(capture);
    soundServer::kill();
    std::atomic<int> interruptions = 0;
    EXPECT_THROW(capture->start([](auto, auto) {}, [&] { ++interruptions; }), Error);
    EXPECT_EQ(interruptions, 0);
}

}  // namespace
}  // namespace parlivo::desktop
