// SPDX-License-Identifier: MIT
#include "audio/AudioRecorder.h"
#include "desktop/sound/PulseInterposed.h"
#include "platform/linux/sound/PulseAudioInput.h"
#include "platform/linux/sound/PulseMicrophone.h"
#include "platform/linux/sound/PulseSounds.h"
#include "platform/linux/sound/SndfileWavConverter.h"
#include "support/Errors.h"
#include "support/FakePlatform.h"
#include "support/SoundServer.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gmock/gmock.h>
#include <sndfile.hh>

#include <algorithm>
#include <cmath>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

/// A recorder on a fake system with real sound.
class RecorderTest : public testing::Test {
  protected:
    RecorderTest() : platform(FakePlatform::install()) {
        platform.audioInput().real = &input;
        platform.wavConverter().real = &converter;
    }
    ~RecorderTest() override { FakePlatform::uninstall(); }

    QStringList files() { return QDir(platform.directories().temporary()).entryList(QDir::Files); }
    static std::vector<float> samplesIn(const QString& path) {
        SndfileHandle file(path.toStdString());
        std::vector<float> samples(static_cast<std::size_t>(file.frames()) *
                                   static_cast<std::size_t>(file.channels()));
        file.readf(samples.data(), file.frames());
        return samples;
    }
    static double secondsIn(const QString& path) {
        const SndfileHandle file(path.toStdString());
        return static_cast<double>(file.frames()) / file.samplerate();
    }
    /// Until the file on disk has grown to some length: a recording of about so much sound.
    bool records(qint64 bytes) const {
        return waitFor([&] { return QFileInfo(recorder.currentURL().value()).size() > bytes; });
    }
    static constexpr qint64 aSecondOrHalf = 192'000;  // at 48 kHz, in mono or stereo

    FakePlatform& platform;
    PulseMicrophone microphone;
    PulseAudioInput input{microphone};
    SndfileWavConverter converter;
    AudioRecorder recorder;
};

TEST_F(RecorderTest, AToneBecomesAWavThatHoldsItToTheEnd) {
    const Speaker speaker;
    recorder.start();
    ASSERT_TRUE(waitFor([&] { return recorder.level() > 0.9F; }));
    ASSERT_TRUE(records(5 * aSecondOrHalf));
    const auto capture = recorder.stop();
    ASSERT_TRUE(capture);
    const QString wav = AudioRecorder::convertToWhisperWAV(*capture);
    EXPECT_NEAR(secondsIn(wav), secondsIn(*capture), 0.001);
    auto samples = samplesIn(wav);
    // From where the speaker began, every tenth of a second holds sound, the last one included.
    const auto begin = std::find_if(samples.begin(), samples.end(), [](float s) { return s > 0.01F; });
    for (auto at = begin; samples.end() - at >= 1'600; at += 1'600)
        EXPECT_GT(*std::max_element(at, at + 1'600), 0.15F) << at - samples.begin();
    EXPECT_GT(*std::max_element(samples.end() - 160, samples.end()), 0.01F);
}

TEST_F(RecorderTest, WithoutAServerTheUserIsToldAndNothingIsLeft) {
    soundServer::kill();
    try {
        recorder.start();
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_TRUE(isError(error, ErrorCode::MicrophoneUnavailable));
        EXPECT_EQ(error.localizedDescription(), QStringLiteral("Microfono non disponibile"));
    }
    EXPECT_THAT(files(), testing::IsEmpty());
}

TEST_F(RecorderTest, AMicrophonePulledOutIsReportedAndTheFileIsWhole) {
    const Speaker speaker;
    bool interrupted = false;
    recorder.onInterrupted = [&] { interrupted = true; };
    recorder.start();
    ASSERT_TRUE(records(2 * aSecondOrHalf));
    soundServer::removeMicrophone();
    ASSERT_TRUE(waitFor([&] { return interrupted; }));
    const auto capture = recorder.stop();
    ASSERT_TRUE(capture);
    EXPECT_GT(secondsIn(AudioRecorder::convertToWhisperWAV(*capture)), 0.5);
}

TEST_F(RecorderTest, AServerKilledWhileRecordingIsReportedAndTheFileIsWhole) {
    bool interrupted = false;
    recorder.onInterrupted = [&] { interrupted = true; };
    recorder.start();
    ASSERT_TRUE(records(2 * aSecondOrHalf));
    soundServer::kill();
    ASSERT_TRUE(waitFor([&] { return interrupted; }));
    const auto capture = recorder.stop();
    ASSERT_TRUE(capture);
    EXPECT_GT(secondsIn(AudioRecorder::convertToWhisperWAV(*capture)), 0.5);
    EXPECT_THROW(recorder.start(), Error);
}

bool hasSoundThread() {
    const QDir tasks(QStringLiteral("/proc/self/task"));
    const QStringList ids = tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::any_of(ids.begin(), ids.end(), [&](const QString& id) {
        QFile name(tasks.filePath(id + QStringLiteral("/comm")));
        return name.open(QIODevice::ReadOnly) && name.readAll().trimmed() == "parlivo.audio";
    });
}

class SoundsTest : public testing::Test {
  protected:
    SoundsTest() {
        for (const char* name : {"Tink", "Pop", "Basso"})
            bundle.resources[QStringLiteral("sounds/%1.wav").arg(QLatin1String(name))] =
                QStringLiteral(PARLIVO_SOUNDS "/%1.wav").arg(QLatin1String(name));
    }

    /// Plays a sound before an open microphone.
    bool isHeard(const char* name) {
        PulseMicrophone microphone;
        const auto capture = PulseAudioInput(microphone).open();
        if (!capture) return false;
        std::atomic<bool> heard = false;
        capture->start(
            [&](std::span<const float> samples, std::size_t) {
                if (*std::max_element(samples.begin(), samples.end()) > 0.03F) heard = true;
            },
            [] {});
        sounds.play(QString::fromLatin1(name));
        return waitFor([&] { return heard.load(); });
    }

    static bool isPlaying() {
        return !soundServer::pactl(
                    {QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")})
                    .isEmpty();
    }
    static bool isConnected() {
        return soundServer::pactl({QStringLiteral("list"), QStringLiteral("clients")})
            .contains(QStringLiteral("it.parlivo.Parlivo"));
    }

    fake::Bundle bundle;
    PulseSounds sounds{bundle};
};

TEST_F(SoundsTest, EachIsHeard) {
    for (const char* name : {"Tink", "Pop", "Basso"}) EXPECT_TRUE(isHeard(name)) << name;
}

TEST_F(SoundsTest, WhatCannotBePlayedIsSilentAndDoesNotHoldTheNextUp) {
    bundle.resources[QStringLiteral("sounds/Noise.wav")] = QStringLiteral("/dev/null");
    bundle.resources[QStringLiteral("sounds/Gone.wav")] = QStringLiteral("/no/such/file.wav");
    for (const char* name : {"Noise", "Gone", "Unknown"}) sounds.play(QString::fromLatin1(name));
    EXPECT_TRUE(isHeard("Tink"));
}

TEST_F(SoundsTest, NoConnectionStaysBehind) {
    sounds.play(QStringLiteral("Basso"));
    EXPECT_TRUE(waitFor(&isConnected));
    EXPECT_TRUE(waitFor([] { return !isConnected() && !isPlaying(); }));
}

TEST_F(SoundsTest, WhatAHangingServerHeldUpIsNotPlayedLater) {
    const int before = interposed::writes;
    soundServer::freeze();
    for (const char* name : {"Tink", "Pop", "Basso", "Tink"}) sounds.play(QString::fromLatin1(name));
    ASSERT_TRUE(waitFor(&hasSoundThread)) << "not even tried";
    ASSERT_TRUE(waitFor([] { return !hasSoundThread(); })) << "the first one is given up";
    soundServer::thaw();
    EXPECT_TRUE(isHeard("Pop"));
    EXPECT_EQ(interposed::writes, before + 1) << "what nobody waits for any more was played";
}

TEST_F(SoundsTest, AServerThatFreezesDoesNotHoldTheProgramsEndUp) {
    soundServer::freeze();
    {
        PulseSounds unheard(bundle);
        unheard.play(QStringLiteral("Tink"));
        ASSERT_TRUE(waitFor(&hasSoundThread)) << "not even tried";
    }
    EXPECT_FALSE(hasSoundThread());
    soundServer::thaw();
    EXPECT_TRUE(isHeard("Pop"));
}

}  // namespace
}  // namespace parlivo::desktop
