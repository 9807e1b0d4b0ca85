// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Permissions.h"

namespace parlivo {

/// The system's privacy settings: capture of sound, and control of other programs.
class MacPermissions : public Permissions {
  public:
    MicrophoneStatus microphone() override;
    /// The system remembers what was granted, so there is nothing to record for a check.
    void requestMicrophone(MicrophoneCheck check, Answer answer) override;
    bool accessibilityTrusted(Prompt prompt) override;
};

}  // namespace parlivo
