#pragma once

#include "platform/AudioInput.h"
#include "platform/linux/sound/MicrophoneChoice.h"
#include "platform/linux/sound/PulseConnection.h"

#include <chrono>
#include <memory>
#include <optional>

namespace parlivo {

/// The microphone of the user's sound server, PulseAudio or PipeWire alike.
class PulseAudioInput : public AudioInput {
  public:
    /// A server that does not answer within this is taken for missing.
    static constexpr std::chrono::milliseconds answerLimit{1000};

    std::unique_ptr<AudioCapture> open() override;
};

/// The default microphone as the server names it now, or the source that the environment names in
/// PULSE_SOURCE. Nothing when there is none or the server does not answer before `end`.
std::optional<SoundSource> findMicrophone(const PulseConnection& connection, Clock::TimePoint end);

}  // namespace parlivo
