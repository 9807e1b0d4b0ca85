// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"

namespace parlivo {

/// The default microphone through an audio engine of its own for each recording, so that the microphone is in
/// use, and shown as such, only while something is recorded.
class EngineAudioInput : public AudioInput {
  public:
    std::unique_ptr<AudioCapture> open() override;
};

}  // namespace parlivo
