// SPDX-License-Identifier: MIT
#include "desktop/sound/PulseInterposed.h"
#include "platform/linux/sound/PulseAudioInput.h"
#include "platform/linux/sound/PulseCapture.h"
#include "platform/linux/sound/PulseMicrophone.h"
#include "support/SoundServer.h"
#include "support/Waiting.h"

#include <QDir>

#include <gmock/gmock.h>
#include <pulse/pulseaudio.h>

#include <atomic>
#include <cmath>
#include <mutex>
#include <optional>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

/// Opens the microphone without knowing anything of the server.
struct Opened {
    PulseMicrophone microphone;
    std::unique_ptr<AudioCapture> capture = PulseAudioInput(microphone).open();
};

bool microphoneOpens() {
    return Opened().capture != nullptr;
}

/// The first answer of a server that was never asked before.
MicrophoneStatus askedMicrophone() {
    PulseMicrophone microphone;
    EXPECT_EQ(microphone.status(), MicrophoneStatus::NotAsked) << "waited for the server";
    const QObject owner;
    MicrophoneStatus answer = MicrophoneStatus::NotAsked;
    microphone.observe(&owner, [&](MicrophoneStatus status) { answer = status; });
    EXPECT_TRUE(waitFor([&] { return answer != MicrophoneStatus::NotAsked; }));
    EXPECT_EQ(microphone.status(), answer);
    return answer;
}

bool microphoneGrants(MicrophoneCheck check) {
    PulseMicrophone microphone;
    std::atomic<int> answer = -1;
    microphone.request(check, [&](bool granted) { answer = granted ? 1 : 0; });
    EXPECT_TRUE(waitFor([&] { return answer >= 0; }));
    return answer == 1;
}

/// A running capture and what it delivered.
class Listener {
  public:
    Listener() : capture_(PulseAudioInput(microphone_).open()) {
        EXPECT_TRUE(capture_) << "no microphone";
        if (capture_) begin();
    }
    ~Listener() = default;
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    bool hears(std::size_t frames) {
        return waitFor([&] { return frames_ >= frames; });
    }
    bool hearsSound() {
        return waitFor([&] { return sounded_.load(); });
    }
    void stop(Clock::TimePoint end = Clock::now()) { capture_->stop(end); }
    void close() { capture_.reset(); }

    int interruptions() const { return interruptions_; }
    std::size_t frames() const { return frames_; }
    std::vector<std::size_t> blocks() const {
        const std::lock_guard lock(mutex_);
        return blocks_;
    }
    std::vector<float> firstChannel() const {
        const std::lock_guard lock(mutex_);
        return samples_;
    }

  private:
    void begin() {
        capture_->start([this](std::span<const float> samples, std::size_t frames) { take(samples, frames); },
                        [this] { ++interruptions_; });
    }
    void take(std::span<const float> samples, std::size_t frames) {
        const std::lock_guard lock(mutex_);
        for (std::size_t i = 0; i < samples.size(); i += samples.size() / frames) {
            samples_.push_back(samples[i]);
            if (samples[i] != 0) sounded_ = true;
        }
        blocks_.push_back(frames);
        frames_ += frames;
    }

    mutable std::mutex mutex_;
    std::vector<float> samples_;       // under mutex_
    std::vector<std::size_t> blocks_;  // under mutex_
    std::atomic<std::size_t> frames_ = 0;
    std::atomic<bool> sounded_ = false;
    std::atomic<int> interruptions_ = 0;
    PulseMicrophone microphone_;
    std::unique_ptr<AudioCapture> capture_;  // last: its tap uses what stands above
};

/// How far each place lies from the one before, the signal's new beginnings taken into account.
std::vector<double> steps(const std::vector<double>& places) {
    std::vector<double> result;
    for (std::size_t i = 1; i < places.size(); ++i) {
        double step = places[i] - places[i - 1];
        if (step < -Speaker::period / 2.0) step += Speaker::period;
        result.push_back(step);
    }
    return result;
}

constexpr std::size_t oneSecond = 48'000;

TEST(SoundTest, WhatIsSpokenArrivesWithoutAHoleOrARepetition) {
    const Speaker speaker;
    ASSERT_TRUE(Listener().hearsSound());
    Listener listener;
    ASSERT_TRUE(listener.hears(2 * oneSecond));
    listener.stop();
    EXPECT_THAT(steps(Speaker::placesIn(listener.firstChannel())), testing::Each(testing::DoubleNear(1, 3)));
    EXPECT_EQ(listener.interruptions(), 0);
}

TEST(SoundTest, BlocksAreWholeButTheLast) {
    Listener listener;
    ASSERT_TRUE(listener.hears(3 * AudioCapture::blockFrames));
    listener.stop();
    auto blocks = listener.blocks();
    ASSERT_GE(blocks.size(), 3U);
    EXPECT_LE(blocks.back(), AudioCapture::blockFrames);
    blocks.pop_back();
    EXPECT_THAT(blocks, testing::Each(AudioCapture::blockFrames));
}

/// A second listener that notes when each piece of sound arrived. A microphone hears at an even pace, so the
/// piece that was least delayed tells by when each sample has been spoken at the latest. A server on a busy
/// machine may leave a piece out, though: only the pieces around a moment tell of it, and only if they agree.
class StreamObserver {
  public:
    StreamObserver() : connection_(PulseConnection::open(Clock::now() + defaultTimeout)) {
        const PulseConnection::Lock lock(*connection_);
        constexpr pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, Speaker::sampleRate, 1};
        stream_.reset(pa_stream_new(connection_->context(), "witness", &spec, nullptr));
        pa_stream_set_read_callback(stream_.get(), &StreamObserver::readable, this);
        const auto any = static_cast<std::uint32_t>(-1);
        const pa_buffer_attr buffer{any, any, any, any, PulseCapture::fragmentFrames * sizeof(float)};
        pa_stream_connect_record(stream_.get(), nullptr, &buffer, PA_STREAM_ADJUST_LATENCY);
    }
    ~StreamObserver() {
        const PulseConnection::Lock lock(*connection_);
        pa_stream_set_read_callback(stream_.get(), nullptr, nullptr);
        pa_stream_disconnect(stream_.get());
        stream_.reset();
    }
    StreamObserver(const StreamObserver&) = delete;
    StreamObserver& operator=(const StreamObserver&) = delete;

    bool hears(std::size_t frames) const {
        return waitFor([&] {
            const PulseConnection::Lock lock(*connection_);
            return samples_.size() >= frames && samples_.back() > 0;
        });
    }

    /// The place in the speaker's signal of the last sample that was certainly spoken before `end`. Nothing
    /// when the microphone's pace was uneven around it.
    std::optional<double> placeBefore(Clock::TimePoint end) const {
        constexpr auto around = 300ms;
        EXPECT_TRUE(waitFor([&] { return lastArrival() > end + around; }));
        const PulseConnection::Lock lock(*connection_);
        const auto before = beginning(end - around, end);
        const auto after = beginning(end, end + around);
        if (!before || !after || *before - *after > 2ms || *after - *before > 2ms) return std::nullopt;
        const Seconds played = end - std::min(*before, *after);
        return Speaker::placesIn(samples_).at(static_cast<std::size_t>(played.count() * Speaker::sampleRate));
    }

  private:
    using Seconds = std::chrono::duration<double>;
    struct Piece {
        Clock::TimePoint arrival;
        /// When the first sample of all was spoken at the latest, judged by this piece.
        Clock::TimePoint beginning;
    };

    Clock::TimePoint lastArrival() const {
        const PulseConnection::Lock lock(*connection_);
        return pieces_.back().arrival;
    }

    /// When the first sample was spoken at the latest, judged by the pieces of this time. Under the lock.
    std::optional<Clock::TimePoint> beginning(Clock::TimePoint from, Clock::TimePoint to) const {
        std::optional<Clock::TimePoint> earliest;
        for (const auto& piece : pieces_) {
            if (piece.arrival < from || piece.arrival >= to) continue;
            earliest = std::min(earliest.value_or(piece.beginning), piece.beginning);
        }
        return earliest;
    }

    static void readable(pa_stream* stream, std::size_t, void* pointer) {
        auto& self = *static_cast<StreamObserver*>(pointer);
        const void* data = nullptr;
        std::size_t bytes = 0;
        while (pa_stream_peek(stream, &data, &bytes) == 0 && bytes > 0) {
            const auto* const values = static_cast<const float*>(data);
            if (values) self.samples_.insert(self.samples_.end(), values, values + bytes / sizeof(float));
            pa_stream_drop(stream);
        }
        const Seconds length(static_cast<double>(self.samples_.size()) / Speaker::sampleRate);
        const auto now = Clock::now();
        self.pieces_.push_back({now, now - std::chrono::duration_cast<Clock::Duration>(length)});
    }

    std::unique_ptr<PulseConnection> connection_;
    PulseStreamHandle stream_;
    // Under the connection's lock.
    std::vector<float> samples_;
    std::vector<Piece> pieces_;
};

/// By how many samples a recording that ended after `delay` goes on beyond what had certainly been spoken by
/// then. Nothing when the microphone stumbled meanwhile.
std::optional<double> surplusOfRecording(const StreamObserver& witness, std::chrono::milliseconds delay) {
    Listener listener;
    if (!listener.hears(Speaker::period + AudioCapture::blockFrames)) return std::nullopt;
    letPass(delay);
    const auto end = Clock::now();
    listener.stop(end);
    const double recorded = Speaker::placesIn(listener.firstChannel()).back();
    const auto spoken = witness.placeBefore(end);
    if (!spoken) return std::nullopt;
    return std::remainder(recorded - *spoken, Speaker::period);
}

TEST(SoundTest, WhatWasSpokenBeforeTheEndIsNotLost) {
    const Speaker speaker;
    ASSERT_TRUE(Listener().hearsSound());
    const StreamObserver witness;
    ASSERT_TRUE(witness.hears(oneSecond));
    int measured = 0;
    for (int attempt = 0; attempt < 40 && measured < 10; ++attempt) {
        // Sound comes in pieces of 21 ms: ends at every distance from the last one.
        const auto surplus = surplusOfRecording(witness, std::chrono::milliseconds(2 * measured));
        if (!surplus) continue;
        EXPECT_GT(*surplus, -240) << "5 ms or more were lost in attempt " << attempt;
        ++measured;
    }
    EXPECT_EQ(measured, 10) << "the microphone's pace was uneven too often";
}

TEST(SoundTest, WhatCameAfterTheEndIsCutOff) {
    Listener listener;
    ASSERT_TRUE(listener.hears(oneSecond));
    const auto end = Clock::now();
    const std::size_t before = listener.frames();
    ASSERT_TRUE(listener.hears(3 * oneSecond));
    const std::size_t delivered = listener.frames();
    listener.stop(end);
    EXPECT_EQ(listener.frames(), delivered) << "a block was added that had come after the end";
    EXPECT_LT(before, delivered);
}

TEST(SoundTest, ManyRecordingsLeaveNoThreadAndNoFileOpen) {
    const auto count = [](const char* folder) {
        return QDir(QString::fromLatin1(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
    };
    ASSERT_TRUE(Listener().hears(1));
    const auto threads = count("/proc/self/task");
    const auto files = count("/proc/self/fd");
    for (int round = 0; round < 20; ++round) {
        Listener listener;
        ASSERT_TRUE(listener.hears(1));
        if (round % 2 == 0) listener.stop();
    }
    EXPECT_EQ(count("/proc/self/task"), threads);
    EXPECT_EQ(count("/proc/self/fd"), files);
}

TEST(SoundTest, WithoutAServerThereIsNoMicrophone) {
    soundServer::kill();
    EXPECT_FALSE(microphoneOpens());
    EXPECT_EQ(askedMicrophone(), MicrophoneStatus::Denied);
}

TEST(SoundTest, AServerThatNeverAnswersIsNotWaitedFor) {
    soundServer::freeze();
    EXPECT_FALSE(microphoneOpens());
    EXPECT_EQ(askedMicrophone(), MicrophoneStatus::Denied);
    soundServer::thaw();
    EXPECT_TRUE(waitFor(&microphoneOpens));
}

TEST(SoundTest, AServerThatFreezesWhileRecordingDoesNotHoldTheEndUp) {
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

TEST(SoundTest, AMicrophoneThatComesLaterIsFound) {
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

TEST(SoundTest, TheOnlyMonitorIsRecordedWhenTheUserNamesIt) {
    soundServer::removeMicrophone();
    EXPECT_FALSE(microphoneOpens());
    qputenv("PULSE_SOURCE", "cavo.monitor");
    EXPECT_TRUE(Listener().hears(1));
    qunsetenv("PULSE_SOURCE");
}

TEST(SoundTest, AMonitorThatTheUserChoseIsRecorded) {
    const Speaker speaker;
    soundServer::setDefaultSource(QStringLiteral("cavo.monitor"));
    EXPECT_TRUE(Listener().hearsSound());
}

TEST(SoundTest, AMicrophonePulledOutEndsTheRecordingWithWhatItHas) {
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

TEST(SoundTest, AMoveThatCannotBeLookedAtEndsTheRecordingWithWhatItHas) {
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

TEST(SoundTest, AnotherMicrophoneTakesOver) {
    soundServer::addPair(QStringLiteral("altro"), QStringLiteral("riserva"));
    soundServer::setDefaultSource(QStringLiteral("microfono"));
    const Speaker speaker(QStringLiteral("altro"));
    Listener listener;
    ASSERT_TRUE(listener.hears(oneSecond));
    soundServer::removeMicrophone();
    EXPECT_TRUE(listener.hearsSound());
    EXPECT_EQ(listener.interruptions(), 0);
}

TEST(SoundTest, AServerKilledWhileRecordingEndsTheRecordingWithWhatItHas) {
    Listener listener;
    ASSERT_TRUE(listener.hears(oneSecond));
    soundServer::kill();
    EXPECT_TRUE(waitFor([&] { return listener.interruptions() > 0; }));
    const std::size_t heard = listener.frames();
    listener.stop();
    EXPECT_EQ(listener.frames(), heard);
    EXPECT_EQ(listener.interruptions(), 1);
}

TEST(SoundTest, AFailedStartIsNoInterruption) {
    const Opened opened;
    const auto& capture = opened.capture;
    ASSERT_TRUE(capture);
    soundServer::kill();
    std::atomic<int> interruptions = 0;
    EXPECT_THROW(capture->start([](auto, auto) {}, [&] { ++interruptions; }), Error);
    EXPECT_EQ(interruptions, 0);
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

TEST(MicrophoneTest, AServerThatHangsHoldsNobodyUp) {
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
