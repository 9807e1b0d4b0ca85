// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"
#include "platform/linux/sound/MicrophoneChoice.h"
#include "platform/linux/sound/MicrophoneReports.h"
#include "platform/linux/sound/PulseConnection.h"
#include "platform/sound/ArrivalClock.h"
#include "platform/sound/BlockAssembler.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace parlivo {

/// One recording through libpulse. The connection's thread is the audio thread; whatever it shares with the
/// caller's thread is used under the connection's lock.
class PulseCapture : public AudioCapture {
  public:
    /// Tells `microphone` whether the recording is granted; it must outlive this.
    PulseCapture(std::unique_ptr<PulseConnection> connection, const SoundSource& source,
                 MicrophoneReports& microphone);
    ~PulseCapture() override;
    PulseCapture(const PulseCapture&) = delete;
    PulseCapture& operator=(const PulseCapture&) = delete;

    AudioFormat format() const override;
    void start(Tap tap, Interruption interruption) override;
    void stop(Clock::TimePoint end) override;

    /// The size of the pieces that the server is asked to send: about 21 ms at 48 kHz. Smaller ones end a
    /// recording sooner, but PipeWire makes its cycle as short: with 512 a busy machine lost sound.
    static constexpr std::uint32_t fragmentFrames = 1024;
    /// How long a stop waits for sound that is still under way.
    static constexpr std::chrono::milliseconds tailLimit{150};

  private:
    enum class Phase {
        Opened,
        Starting,
        Running,
        Verifying,    ///< the server moved the recording to another source: is that one a microphone?
        Interrupted,  ///< the source is gone
        Stopped,
    };

    void connectStream();
    void waitForStart();
    bool isDecided() const;
    bool isRunning() const { return phase_ == Phase::Running || phase_ == Phase::Verifying; }
    void drainStream();
    void verifySource();
    void interrupt();
    void waitForTail(Clock::TimePoint end);
    void closeStream();
    std::optional<std::uint64_t> reportedFramesBefore(Clock::TimePoint end, Clock::TimePoint limit) const;

    static void readable(pa_stream* stream, std::size_t bytes, void* self);
    static void stateChanged(pa_stream* stream, void* self);
    static void moved(pa_stream* stream, void* self);
    static void sourceDescribed(pa_context* context, const pa_source_info* info, int end, void* self);

    const std::unique_ptr<PulseConnection> connection_;
    MicrophoneReports& microphone_;
    const pa_sample_spec sampleSpec_;
    const pa_channel_map channelMap_;
    const std::optional<std::string> device_;  ///< asked for by its name

    // All under the connection's lock.
    Phase phase_ = Phase::Opened;
    PulseStreamHandle stream_;
    PulseOperationHandle verification_;
    std::optional<BlockAssembler> assembler_;
    std::uint64_t received_ = 0;  // frames
    ArrivalClock arrivals_;
    Interruption interruption_;
};

}  // namespace parlivo
