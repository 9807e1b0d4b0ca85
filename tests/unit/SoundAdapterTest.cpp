// SPDX-License-Identifier: MIT
#include "platform/linux/sound/MicrophoneChoice.h"
#include "platform/linux/sound/PulseReason.h"
#include "platform/sound/ArrivalClock.h"
#include "platform/sound/BlockAssembler.h"

#include <gmock/gmock.h>
#include <pulse/def.h>

#include <numeric>
#include <vector>

namespace parlivo {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;

class BlockAssemblerTest : public testing::Test {
  protected:
    BlockAssembler make(int channels) {
        return {channels, [this](std::span<const float> samples, std::size_t frames) {
                    blocks.push_back(frames);
                    sound.insert(sound.end(), samples.begin(), samples.end());
                }};
    }
    static std::vector<float> ramp(std::size_t count) {
        std::vector<float> samples(count);
        std::iota(samples.begin(), samples.end(), 1.0F);
        return samples;
    }

    std::vector<std::size_t> blocks;
    std::vector<float> sound;
};

TEST_F(BlockAssemblerTest, PiecesOfAnySizeBecomeWholeBlocksAndARest) {
    for (const int channels : {1, 2, 6}) {
        for (const std::size_t piece : {1U, 255U, 1024U, 4095U, 4096U, 4097U, 10'000U}) {
            blocks.clear();
            sound.clear();
            const auto spoken = ramp(10'000 * static_cast<std::size_t>(channels));
            auto assembler = make(channels);
            for (std::size_t at = 0; at < 10'000; at += piece)
                assembler.append(spoken.data() + at * static_cast<std::size_t>(channels),
                                 std::min(piece, 10'000 - at));
            assembler.flush();
            EXPECT_THAT(blocks, ElementsAre(4096, 4096, 1808)) << "pieces of " << piece;
            EXPECT_EQ(sound, spoken) << "pieces of " << piece;
        }
    }
}

TEST_F(BlockAssemblerTest, NothingGivesNoBlock) {
    auto assembler = make(1);
    assembler.flush();
    EXPECT_TRUE(blocks.empty());
}

TEST_F(BlockAssemblerTest, AGapIsFilledWithSilence) {
    auto assembler = make(2);
    const auto spoken = ramp(200);
    assembler.append(spoken.data(), 100);
    assembler.append(nullptr, 5'000);
    assembler.append(spoken.data(), 100);
    assembler.flush();
    ASSERT_EQ(sound.size(), 2U * 5'200U);
    EXPECT_THAT(std::vector(sound.begin() + 200, sound.begin() + 10'200), Each(0.0F));
    EXPECT_TRUE(std::equal(spoken.begin(), spoken.end(), sound.end() - 200));
}

TEST_F(BlockAssemblerTest, TheCutIsExact) {
    auto assembler = make(1);
    const auto spoken = ramp(9'000);
    assembler.append(spoken.data(), 1'000);
    assembler.cutAt(8'999);
    EXPECT_FALSE(assembler.isComplete());
    assembler.append(spoken.data() + 1'000, 8'000);
    EXPECT_TRUE(assembler.isComplete());
    assembler.append(spoken.data(), 9'000);
    assembler.flush();
    EXPECT_EQ(sound, std::vector(spoken.begin(), spoken.end() - 1));
}

TEST_F(BlockAssemblerTest, ACutInWhatHasArrivedTakesTheSurplusBack) {
    auto assembler = make(1);
    const auto spoken = ramp(5'000);
    assembler.append(spoken.data(), 5'000);
    assembler.cutAt(4'500);
    EXPECT_TRUE(assembler.isComplete());
    assembler.flush();
    EXPECT_EQ(sound.size(), 4'500U);
}

TEST_F(BlockAssemblerTest, ACutBeforeADeliveredBlockKeepsTheBlock) {
    auto assembler = make(1);
    assembler.append(nullptr, 5'000);
    assembler.cutAt(100);
    assembler.flush();
    EXPECT_THAT(blocks, ElementsAre(4096));
}

class ArrivalClockTest : public testing::Test {
  protected:
    ArrivalClock clock{48'000};
    const Clock::TimePoint beginning = Clock::now();
};

TEST_F(ArrivalClockTest, WithoutArrivalsNothingIsKnown) {
    EXPECT_FALSE(clock.framesBefore(beginning));
}

TEST_F(ArrivalClockTest, TheLeastDelayedPieceSetsTheClock) {
    clock.arrived(4'800, beginning + 100ms + 9ms);
    clock.arrived(9'600, beginning + 200ms);
    clock.arrived(14'400, beginning + 300ms + 30ms);
    EXPECT_NEAR(static_cast<double>(clock.framesBefore(beginning + 350ms).value()), 16'800, 1);
}

TEST_F(ArrivalClockTest, BeforeTheBeginningThereIsNoFrame) {
    clock.arrived(4'800, beginning + 100ms);
    EXPECT_EQ(clock.framesBefore(beginning - 1s), 0U);
}

TEST_F(ArrivalClockTest, ADriftingClockIsFollowed) {
    // 300 parts in a million too slow: 180 ms in ten minutes, of which two seconds may still count.
    std::uint64_t frames = 0;
    Clock::TimePoint now = beginning;
    while (now < beginning + 10min) {
        now += std::chrono::nanoseconds(21'339'733);
        clock.arrived(frames += 1'024, now);
    }
    EXPECT_NEAR(static_cast<double>(clock.framesBefore(now).value()), static_cast<double>(frames), 48);
}

class MicrophoneChoiceTest : public testing::Test {
  protected:
    static SoundSource source(const char* name, const char* monitored = "") {
        return {.name = name,
                .description = {},
                .monitoredSink = monitored,
                .sampleSpec = {PA_SAMPLE_S16LE, 48'000, 2}};
    }
    static std::string chosen(const std::vector<SoundSource>& sources, const SoundDefaults& defaults) {
        const auto choice = chooseMicrophone(sources, defaults);
        return choice ? choice->name : "none";
    }
};

TEST_F(MicrophoneChoiceTest, TheDefaultSourceIsTaken) {
    EXPECT_EQ(chosen({source("usb"), source("built-in")}, {"built-in", "out"}), "built-in");
}

TEST_F(MicrophoneChoiceTest, WithoutADefaultThereIsNone) {
    EXPECT_EQ(chosen({source("usb")}, {"", "out"}), "none");
    EXPECT_EQ(chosen({}, {"gone", "out"}), "none");
}

TEST_F(MicrophoneChoiceTest, TheMonitorThatServersFallBackOnIsNone) {
    EXPECT_EQ(chosen({source("out.monitor", "out")}, {"out.monitor", "out"}), "none");
}

TEST_F(MicrophoneChoiceTest, AnEmptySocketDoesNotMakeTheMonitorAChoice) {
    SoundSource socket = source("jack");
    socket.pluggedIn = false;
    EXPECT_EQ(chosen({socket, source("out.monitor", "out")}, {"out.monitor", "out"}), "none");
}

TEST_F(MicrophoneChoiceTest, AMonitorBesideAMicrophoneWasChosenByTheUser) {
    EXPECT_EQ(chosen({source("usb"), source("out.monitor", "out")}, {"out.monitor", "out"}), "out.monitor");
}

TEST_F(MicrophoneChoiceTest, AMonitorThatTheUserNamedIsTaken) {
    const std::vector only{source("out.monitor", "out")};
    EXPECT_EQ(chosen(only, {"out.monitor", "out", SoundDefaults::ChosenBy::User}), "out.monitor");
    EXPECT_EQ(chosen(only, {"out.monitor", "out", SoundDefaults::ChosenBy::Server}), "none");
    EXPECT_EQ(chosen(only, {"gone", "out", SoundDefaults::ChosenBy::User}), "none");
}

TEST_F(MicrophoneChoiceTest, AnotherSinksMonitorWasChosenByTheUser) {
    EXPECT_EQ(chosen({source("out.monitor", "out"), source("call.monitor", "call")}, {"call.monitor", "out"}),
              "call.monitor");
}

TEST_F(MicrophoneChoiceTest, ASourceWithoutRateOrChannelsIsNone) {
    SoundSource mute = source("usb");
    mute.sampleSpec.rate = 0;
    EXPECT_EQ(chosen({mute}, {"usb", "out"}), "none");
    mute.sampleSpec = {PA_SAMPLE_S16LE, 48'000, 0};
    EXPECT_EQ(chosen({mute}, {"usb", "out"}), "none");
}

TEST_F(MicrophoneChoiceTest, TheOneThatIsChosenByNameIsTakenWhileItIsThere) {
    const std::vector sources{source("usb"), source("built-in"), source("out.monitor", "out")};
    const SoundDefaults defaults{"built-in", "out"};
    const auto taken = chooseMicrophone(sources, defaults, "usb");
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->name, "usb");
    EXPECT_TRUE(taken->askedByName);
    for (const char* none : {"", "unplugged"}) {
        const auto instead = chooseMicrophone(sources, defaults, none);
        ASSERT_TRUE(instead);
        EXPECT_EQ(instead->name, "built-in") << none;
        EXPECT_FALSE(instead->askedByName) << "the server goes on choosing";
    }
    SoundSource mute = source("mute");
    mute.sampleSpec.rate = 0;
    EXPECT_EQ(chooseMicrophone(std::vector{mute, source("built-in")}, defaults, "mute")->name, "built-in");
}

TEST_F(MicrophoneChoiceTest, TheEnvironmentVariableOverridesTheSetting) {
    const std::vector sources{source("usb"), source("built-in")};
    const auto taken = chooseMicrophone(sources, {"built-in", "out", SoundDefaults::ChosenBy::User}, "usb");
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->name, "built-in");
}

TEST_F(MicrophoneChoiceTest, WhatRepeatsASinkIsNotOfferedAsAMicrophone) {
    SoundSource mute = source("mute");
    mute.sampleSpec.channels = 0;
    const auto offered = microphonesAmong(std::vector{source("usb"), source("out.monitor", "out"), mute});
    ASSERT_EQ(offered.size(), 1U);
    EXPECT_EQ(offered[0].name, "usb");
}

TEST(PulseReasonTest, EveryFailureOfTheServerIsToldInItalian) {
    EXPECT_EQ(pulseReason(PA_ERR_NOENTITY), QStringLiteral("dispositivo audio non trovato"));
    EXPECT_EQ(pulseReason(PA_ERR_CONNECTIONREFUSED),
              QStringLiteral("il server audio rifiuta la connessione"));
    EXPECT_EQ(pulseReason(PA_ERR_FORKED), QStringLiteral("errore del server audio %1").arg(PA_ERR_FORKED));
    for (int code = PA_OK + 1; code < PA_ERR_MAX; ++code) {
        EXPECT_TRUE(pulseReason(code).contains(QStringLiteral("audio"))) << code;
    }
}

}  // namespace
}  // namespace parlivo
