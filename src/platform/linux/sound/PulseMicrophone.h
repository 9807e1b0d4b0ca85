#pragma once

#include "platform/Permissions.h"

namespace parlivo {

/// Whether the sound server lets the program hear. Sound servers ask nobody: there is no state "not asked".
class PulseMicrophone {
  public:
    /// Authorised when a server answers and has a microphone. Looks without recording, so that asking every
    /// second neither lights the microphone's lamp nor turns a headset into a telephone. Returns within a
    /// second. Main thread.
    MicrophoneStatus status() const;

    /// Records for a moment, which makes a server that guards the microphone decide. Answers before it
    /// returns, within two seconds. Main thread.
    void request(const Permissions::Answer& answer) const;
};

}  // namespace parlivo
