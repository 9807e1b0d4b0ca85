// SPDX-License-Identifier: MIT
#include "desktop/sound/Listener.h"
#include "desktop/sound/PulseInterposed.h"
#include "support/SoundServer.h"

#include <atomic>

namespace parlivo::desktop {
namespace {

bool microphoneGrants(MicrophoneCheck check) {
    PulseMicrophone microphone;
    std::atomic<int> answer = -1;
    microphone.request(check, [&](bool granted) { answer = granted ? 1 : 0; });
    EXPECT_TRUE(waitFor([&] { return answer >= 0; }));
    return answer == 1;
}

TEST(MicrophoneTest, IsAuthorisedWhereAServerHasOne) {
    EXPECT_EQ(askedMicrophone(), MicrophoneStatus::Authorised);
    EXPECT_TRUE(microphoneGrants(MicrophoneCheck::WithoutRecording));
    EXPECT_TRUE(microphoneGrants(MicrophoneCheck::ByRecording));
}

TEST(MicrophoneTest, IsRefusedWithoutAServer) {
    soundServer::kill();
    EXPECT_FALSE(microphoneGrants(MicrophoneCheck::WithoutRecording));
    EXPECT_FALSE(microphoneGrants(MicrophoneCheck::ByRecording));
}

TEST(MicrophoneTest, IsAskedForWithoutAStream) {
    const int before = interposed::recordings;
    EXPECT_TRUE(microphoneGrants(MicrophoneCheck::WithoutRecording));
    EXPECT_EQ(askedMicrophone(), MicrophoneStatus::Authorised);
    EXPECT_EQ(interposed::recordings, before);
    EXPECT_TRUE(microphoneGrants(MicrophoneCheck::ByRecording));
    EXPECT_EQ(interposed::recordings, before + 1);
}

TEST(MicrophoneTest, IsDeniedAfterARefusedRecordingUntilOneIsGranted) {
    PulseMicrophone microphone;
    PulseAudioInput input(microphone);
    const auto grants = [&] {
        std::atomic<int> answer = -1;
        microphone.request(MicrophoneCheck::WithoutRecording,
                           [&](bool granted) { answer = granted ? 1 : 0; });
        EXPECT_TRUE(waitFor([&] { return answer >= 0; }));
        return answer == 1;
    };
    microphone.reportRecording(false);
    EXPECT_FALSE(grants());
    const auto capture = input.open();
    ASSERT_TRUE(capture);
    capture->start([](auto, auto) {}, [] {});
    EXPECT_TRUE(grants());
}

TEST(MicrophoneTest, AHangingServerBlocksNobody) {
    PulseMicrophone microphone;
    PulseAudioInput input(microphone);
    soundServer::freeze();
    interposed::waits = 0;
    EXPECT_EQ(microphone.status(), MicrophoneStatus::NotAsked);
    ASSERT_TRUE(waitFor([&] { return microphone.serverHangs(); }));
    EXPECT_TRUE(waitFor([&] { return microphone.status() == MicrophoneStatus::Denied; }));
    EXPECT_FALSE(input.open()) << "the next recordings";
    EXPECT_FALSE(input.open());
    bool granted = true;
    microphone.request(MicrophoneCheck::ByRecording, [&](bool answer) { granted = answer; });
    EXPECT_FALSE(granted);
    EXPECT_EQ(interposed::waits, 0) << "the main thread waited for the server";
    soundServer::thaw();
    EXPECT_TRUE(waitFor([&] { return !microphone.serverHangs(); }));
    EXPECT_TRUE(waitFor([&] { return microphone.status() == MicrophoneStatus::Authorised; }));
    EXPECT_TRUE(input.open());
}

TEST(MicrophoneTest, ARecordingThatMeetsAHangingServerWaitsOnlyOnce) {
    PulseMicrophone microphone;
    PulseAudioInput input(microphone);
    soundServer::freeze();
    EXPECT_FALSE(input.open());
    EXPECT_TRUE(microphone.serverHangs());
    interposed::waits = 0;
    EXPECT_FALSE(input.open());
    EXPECT_EQ(interposed::waits, 0);
    soundServer::thaw();
    EXPECT_TRUE(waitFor([&] { return input.open() != nullptr; })) << "nobody looks whether it answers again";
}

TEST(MicrophoneTest, TheEndDoesNotWaitForAServerToAnswer) {
    soundServer::freeze();
    {
        PulseMicrophone microphone;
        microphone.status();
        ASSERT_TRUE(waitFor([&] { return microphone.serverHangs(); }));
    }
    soundServer::thaw();
}

}  // namespace
}  // namespace parlivo::desktop
