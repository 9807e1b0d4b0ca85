// SPDX-License-Identifier: MIT
#include "audio/AudioRecorder.h"
#include "platform/macos/MacTest.h"
#include "platform/macos/fakes/FakeObjects.h"
#include "platform/macos/sound/EngineAudioInput.h"

#include <algorithm>
#include <thread>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t second = 1'000'000'000;  // ns

class AudioInputTest : public MacTest {
  protected:
    AudioInputTest() { mac::renewWorld(); }

    /// Starts a capture that keeps what it hears.
    std::unique_ptr<AudioCapture> started() {
        auto capture = input.open();
        capture->start(
            [this](std::span<const float> samples, std::size_t frames) {
                heard.insert(heard.end(), samples.begin(), samples.end());
                blocks.push_back(frames);
            },
            [this] { ++interruptions; });
        return capture;
    }

    /// A buffer whose last frame is captured now.
    static bool deliverNow(const std::vector<std::vector<float>>& channels) {
        const auto length = static_cast<double>(channels.front().size()) / mac::world().sampleRate;
        return mac::deliverBuffer(channels, mac::hostNow() - static_cast<std::uint64_t>(length * second));
    }

    EngineAudioInput input;
    std::vector<float> heard;
    std::vector<std::size_t> blocks;
    int interruptions = 0;
};

TEST_F(AudioInputTest, NoRateOrNoChannelsIsNoMicrophone) {
    mac::world().sampleRate = 0;
    EXPECT_FALSE(input.open());
    mac::renewWorld();
    mac::world().channels = 0;
    EXPECT_FALSE(input.open());
    mac::renewWorld();
    EXPECT_TRUE(input.open());
    EXPECT_FALSE(mac::world().tapped) << "opening captures nothing";
}

TEST_F(AudioInputTest, TheFormatIsTheInputsOwn) {
    mac::world().sampleRate = 44'100;
    mac::world().channels = 2;
    const auto capture = input.open();
    EXPECT_EQ(capture->format().sampleRate, 44'100);
    EXPECT_EQ(capture->format().channels, 2);
}

TEST_F(AudioInputTest, TheTapIsThereBeforeTheEngineStartsAndGoesBeforeItStops) {
    auto capture = started();
    EXPECT_EQ(mac::takeCalls(),
              QStringList(
                  {QStringLiteral("format of bus 0"), QStringLiteral("tap bus 0 by 4096 frames"),
                   QStringLiteral("observe AVAudioEngineConfigurationChangeNotification of the engine on the "
                                  "poster's thread"),
                   QStringLiteral("start")}));
    capture.reset();
    EXPECT_EQ(mac::takeCalls(),
              QStringList({QStringLiteral("observe no more"), QStringLiteral("remove the tap of bus 0"),
                           QStringLiteral("stop")}));
}

TEST_F(AudioInputTest, AnEngineThatDoesNotStartGivesTheSystemsErrorAndLeavesNothing) {
    mac::world().engineStarts = false;
    mac::world().errorWords = QStringLiteral("Il dispositivo è occupato");
    try {
        started();
        ADD_FAILURE() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.localizedDescription(), QStringLiteral("Il dispositivo è occupato"));
    }
    EXPECT_FALSE(mac::world().tapped);
}

TEST_F(AudioInputTest, SamplesArriveInterleavedAndInBlocksWhateverTheBuffersSize) {
    mac::world().channels = 2;
    const auto capture = started();
    const auto stopped = [&] { capture->stop(Clock::now() + 1s); };
    std::vector<float> left(4800);
    std::vector<float> right(4800);
    for (std::size_t i = 0; i < left.size(); ++i) {
        left[i] = static_cast<float>(i);
        right[i] = -static_cast<float>(i);
    }
    EXPECT_TRUE(deliverNow({left, right}));
    EXPECT_EQ(blocks, std::vector<std::size_t>{4096});
    EXPECT_TRUE(deliverNow({left, right}));
    stopped();
    EXPECT_EQ(blocks, (std::vector<std::size_t>{4096, 4096, 1408}));
    ASSERT_EQ(heard.size(), 2 * 9600U);
    for (std::size_t i = 0; i < 9600; ++i) {
        ASSERT_EQ(heard[2 * i], left[i % 4800]) << i;
        ASSERT_EQ(heard[2 * i + 1], right[i % 4800]) << i;
    }
}

TEST_F(AudioInputTest, ABufferOfInterleavedSamplesIsReadByItsStride) {
    const auto capture = started();
    EXPECT_TRUE(mac::deliverBuffer({{1, 9, 2, 9, 3, 9}}, {}, 2));
    capture->stop(Clock::now());
    EXPECT_EQ(heard, (std::vector<float>{1, 2, 3}));
}

TEST_F(AudioInputTest, ABufferWithoutFloatsIsLeftOut) {
    const auto capture = started();
    EXPECT_TRUE(mac::deliverBuffer({}));
    capture->stop(Clock::now());
    EXPECT_TRUE(heard.empty());
}

TEST_F(AudioInputTest, WhatWasSpokenBeforeTheEndIsStillDeliveredAndTheRestCutOff) {
    const auto capture = started();
    EXPECT_TRUE(deliverNow({std::vector<float>(4096, 0.1F)}));
    const auto end = Clock::now() + 20ms;  // 960 frames later
    std::thread tap([] {
        std::this_thread::sleep_for(40ms);
        deliverNow({std::vector<float>(4096, 0.2F)});
    });
    capture->stop(end);
    tap.join();
    EXPECT_GT(heard.size(), 4096U) << "the last buffer had not come yet when the key was let go";
    EXPECT_LT(heard.size(), 2 * 4096U);
    EXPECT_EQ(heard.back(), 0.2F);
    EXPECT_FALSE(mac::world().tapped);
}

TEST_F(AudioInputTest, AMicrophoneThatGoesAwayIsReportedOnceAndWhatItGaveDelivered) {
    const auto capture = started();
    EXPECT_TRUE(deliverNow({std::vector<float>(100, 0.1F)}));
    mac::changeConfiguration();
    mac::changeConfiguration();
    EXPECT_EQ(interruptions, 1);
    EXPECT_EQ(heard.size(), 100U);
    const auto before = Clock::now();
    capture->stop(before);
    EXPECT_EQ(heard.size(), 100U);
}

TEST_F(AudioInputTest, TheRecorderRecordsThroughIt) {
    platform.audioInput().real = &input;
    auto now = Clock::now();
    AudioRecorder recorder([&now] { return now; });
    recorder.start();
    EXPECT_TRUE(deliverNow({std::vector<float>(4096, 0.5F)}));
    EXPECT_FLOAT_EQ(recorder.level(), 0.6F) << "full scale after one buffer";
    EXPECT_TRUE(deliverNow({std::vector<float>(4096, 0.5F)}));
    EXPECT_FLOAT_EQ(recorder.level(), 0.84F);
    now += 300ms;
    const auto recording = recorder.stop();
    ASSERT_TRUE(recording);
    EXPECT_TRUE(QFile::exists(*recording));
    EXPECT_FALSE(mac::world().tapped);
}

}  // namespace
}  // namespace parlivo
