// SPDX-License-Identifier: MIT
#include "desktop/sound/Listener.h"
#include "platform/linux/sound/PulseCapture.h"
#include "support/SoundServer.h"

#include <QDir>

#include <gmock/gmock.h>
#include <pulse/pulseaudio.h>

#include <cmath>
#include <optional>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

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

TEST(SoundTest, WhatIsSpokenArrivesWithoutAHoleOrARepetition) {
    const Speaker speaker;
    ASSERT_TRUE(Listener().hearsSound());
    // Another recording keeps the server's cycle as short as this one wants it. PipeWire 1.4 shortens it for
    // the first recording, and its virtual microphone stumbles then, whoever listens.
    const StreamObserver witness;
    ASSERT_TRUE(witness.hears(oneSecond));
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

}  // namespace
}  // namespace parlivo::desktop
