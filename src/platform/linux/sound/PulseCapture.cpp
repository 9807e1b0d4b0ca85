// SPDX-License-Identifier: MIT
#include "platform/linux/sound/PulseCapture.h"

#include <algorithm>
#include <utility>

namespace parlivo {

namespace {

/// How long a server may take to start the stream. It has just answered; a slower one hangs.
constexpr std::chrono::milliseconds startLimit{1000};

pa_sample_spec asFloats(pa_sample_spec spec) {
    spec.format = PA_SAMPLE_FLOAT32NE;
    return spec;
}

pa_channel_map mapOf(const SoundSource& source) {
    pa_channel_map map = source.channelMap;
    if (pa_channel_map_compatible(&map, &source.sampleSpec) == 0)
        pa_channel_map_init_extend(&map, source.sampleSpec.channels, PA_CHANNEL_MAP_DEFAULT);
    return map;
}

}  // namespace

PulseCapture::PulseCapture(std::unique_ptr<PulseConnection> connection, const SoundSource& source,
                           MicrophoneReports& microphone)
    : connection_(std::move(connection)),
      microphone_(microphone),
      sampleSpec_(asFloats(source.sampleSpec)),
      channelMap_(mapOf(source)),
      device_(source.askedByName ? std::optional(source.name) : std::nullopt),
      arrivals_(sampleSpec_.rate) {}

PulseCapture::~PulseCapture() {
    const PulseConnection::Lock lock(*connection_);
    closeStream();
}

AudioFormat PulseCapture::format() const {
    return {static_cast<double>(sampleSpec_.rate), sampleSpec_.channels};
}

void PulseCapture::start(Tap tap, Interruption interruption) {
    const PulseConnection::Lock lock(*connection_);
    assembler_.emplace(sampleSpec_.channels, std::move(tap));
    interruption_ = std::move(interruption);
    connectStream();
    waitForStart();
}

void PulseCapture::waitForStart() {
    if (!connection_->waitUntil(Clock::now() + startLimit, [this] { return isDecided(); })) {
        microphone_.reportSilence();
        throw PulseConnection::error(PA_ERR_TIMEOUT);
    }
    if (phase_ == Phase::Starting) {
        const Error error = connection_->lastError();
        if (error.code() == PA_ERR_ACCESS) microphone_.reportRecording(false);
        throw Error(error);
    }
    microphone_.reportRecording(true);
}

bool PulseCapture::isDecided() const {
    return phase_ != Phase::Starting || !PA_STREAM_IS_GOOD(pa_stream_get_state(stream_.get())) ||
           !connection_->isAlive();
}

/// Unless the user chose one here, the server chooses the source, so that the user's mixer can route this
/// program.
void PulseCapture::connectStream() {
    stream_.reset(pa_stream_new(connection_->context(), "Dettatura", &sampleSpec_, &channelMap_));
    if (!stream_) throw connection_->lastError();
    pa_stream_set_read_callback(stream_.get(), &PulseCapture::readable, this);
    pa_stream_set_state_callback(stream_.get(), &PulseCapture::stateChanged, this);
    pa_stream_set_moved_callback(stream_.get(), &PulseCapture::moved, this);
    connection_->onLost = [this] { interrupt(); };

    constexpr auto serverDecides = static_cast<std::uint32_t>(-1);
    const auto fragment = static_cast<std::uint32_t>(fragmentFrames * pa_frame_size(&sampleSpec_));
    const pa_buffer_attr buffer{serverDecides, serverDecides, serverDecides, serverDecides, fragment};
    phase_ = Phase::Starting;
    if (pa_stream_connect_record(stream_.get(), device_ ? device_->c_str() : nullptr, &buffer,
                                 PA_STREAM_ADJUST_LATENCY) < 0)
        throw connection_->lastError();
}

void PulseCapture::readable(pa_stream*, std::size_t, void* self) {
    static_cast<PulseCapture*>(self)->drainStream();
}

/// Takes what has arrived. While a new source is being verified, the sound stays in the stream's buffer.
void PulseCapture::drainStream() {
    const std::size_t frameSize = pa_frame_size(&sampleSpec_);
    while (phase_ == Phase::Running && pa_stream_readable_size(stream_.get()) > 0) {
        const void* data = nullptr;  // stays null for a hole: sound that the server could not get
        std::size_t bytes = 0;
        if (pa_stream_peek(stream_.get(), &data, &bytes) < 0 || bytes == 0) return;
        assembler_->append(static_cast<const float*>(data), bytes / frameSize);
        received_ += bytes / frameSize;
        pa_stream_drop(stream_.get());
    }
    arrivals_.arrived(received_, Clock::now());
    if (assembler_->isComplete()) connection_->wake();
}

void PulseCapture::stateChanged(pa_stream* stream, void* self) {
    auto* const capture = static_cast<PulseCapture*>(self);
    const auto state = pa_stream_get_state(stream);
    if (state == PA_STREAM_READY) capture->phase_ = Phase::Running;
    if (!PA_STREAM_IS_GOOD(state)) capture->interrupt();
    capture->connection_->wake();
}

void PulseCapture::moved(pa_stream*, void* self) {
    static_cast<PulseCapture*>(self)->verifySource();
}

/// When a source goes away, its recordings end or are moved to another source. A second microphone is
/// accepted, the monitor of a sink is not.
void PulseCapture::verifySource() {
    if (!isRunning()) return;
    phase_ = Phase::Verifying;
    if (verification_) pa_operation_cancel(verification_.get());
    verification_.reset(pa_context_get_source_info_by_index(connection_->context(),
                                                            pa_stream_get_device_index(stream_.get()),
                                                            &PulseCapture::sourceDescribed, this));
    // A server that cannot be asked will not answer either; what was spoken until now is kept.
    if (!verification_) interrupt();
}

void PulseCapture::sourceDescribed(pa_context*, const pa_source_info* info, int end, void* self) {
    auto* const capture = static_cast<PulseCapture*>(self);
    if (capture->phase_ != Phase::Verifying || end > 0) return;
    if (end < 0 || info->monitor_of_sink != PA_INVALID_INDEX) {
        capture->interrupt();
    } else {
        capture->phase_ = Phase::Running;
        capture->drainStream();
    }
}

void PulseCapture::interrupt() {
    if (!isRunning()) return;
    phase_ = Phase::Interrupted;
    assembler_->flush();
    if (const Interruption report = std::exchange(interruption_, nullptr)) report();
    connection_->wake();
}

void PulseCapture::stop(Clock::TimePoint end) {
    const PulseConnection::Lock lock(*connection_);
    if (isRunning()) {
        waitForTail(end);
        assembler_->flush();
    }
    closeStream();
}

/// Returns when everything spoken before `end` has arrived, but not later than the limit after it.
void PulseCapture::waitForTail(Clock::TimePoint end) {
    const auto limit = end + tailLimit;
    const auto reported = reportedFramesBefore(end, limit);
    const auto observed = arrivals_.framesBefore(end);
    // Both may be too short, never too long. The server's report includes the delay of the hardware, but
    // PipeWire's does not include the sound since its last cycle; the arrivals include that, but no delay of
    // the hardware.
    assembler_->cutAt(std::max(reported.value_or(0), observed.value_or(0)));
    connection_->waitUntil(limit, [this] { return !isRunning() || assembler_->isComplete(); });
}

/// The recording's length at the moment `end`, as the server sees it: what has entered the microphone,
/// whether or not it has come through device and server. nullopt if the server does not say.
std::optional<std::uint64_t> PulseCapture::reportedFramesBefore(Clock::TimePoint end,
                                                                Clock::TimePoint limit) const {
    struct Reply {
        const PulseConnection& connection;
        bool arrived = false;
    } reply{*connection_};
    const auto take = [](pa_stream*, int, void* pointer) {
        static_cast<Reply*>(pointer)->arrived = true;
        static_cast<Reply*>(pointer)->connection.wake();
    };
    const PulseOperationHandle question(pa_stream_update_timing_info(stream_.get(), take, &reply));
    connection_->waitUntil(limit, [&] { return reply.arrived || !isRunning(); });
    if (question) pa_operation_cancel(question.get());

    pa_usec_t now = 0;
    if (!reply.arrived || pa_stream_get_time(stream_.get(), &now) < 0) return {};
    const auto since = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - end);
    const auto length = std::max(std::chrono::microseconds(now) - since, std::chrono::microseconds::zero());
    return static_cast<std::uint64_t>(length.count()) * sampleSpec_.rate / 1'000'000;
}

void PulseCapture::closeStream() {
    phase_ = Phase::Stopped;
    connection_->onLost = nullptr;
    if (verification_) pa_operation_cancel(verification_.get());
    verification_.reset();
    if (!stream_) return;
    pa_stream_set_read_callback(stream_.get(), nullptr, nullptr);
    pa_stream_set_state_callback(stream_.get(), nullptr, nullptr);
    pa_stream_set_moved_callback(stream_.get(), nullptr, nullptr);
    pa_stream_disconnect(stream_.get());
    stream_.reset();
}

}  // namespace parlivo
