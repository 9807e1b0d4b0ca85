// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"
#include "platform/linux/sound/MicrophoneChoice.h"
#include "platform/linux/sound/MicrophoneReports.h"
#include "platform/linux/sound/PulseConnection.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace parlivo {

/// The microphone of the user's sound server, PulseAudio or PipeWire alike.
class PulseAudioInput : public AudioInput {
  public:
    /// Reports to `microphone` when the server hangs, and does not wait for the server while `microphone`
    /// knows that it does. `microphone` must outlive this.
    explicit PulseAudioInput(MicrophoneReports& microphone) : microphone_(microphone) {}

    bool offersChoice() const override { return true; }
    std::vector<Microphone> microphones() override;
    void choose(const QString& id) override { microphone_.chooseSource(id.toStdString()); }
    std::unique_ptr<AudioCapture> open() override;

  private:
    MicrophoneReports& microphone_;
};

/// The source that the environment names in PULSE_SOURCE, or else the one named `wanted` if it is there, or
/// else the default microphone as the server names it now. nullopt if there is none or the server does not
/// answer before `end`.
std::optional<SoundSource> findMicrophone(const PulseConnection& connection, Clock::TimePoint end,
                                          const std::string& wanted);

}  // namespace parlivo
