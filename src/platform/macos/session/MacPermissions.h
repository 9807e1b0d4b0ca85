#pragma once

#include "platform/Permissions.h"

namespace parlivo {

/// The system's privacy settings: capture of sound, and control of other programs.
class MacPermissions : public Permissions {
  public:
    MicrophoneStatus microphone() override;
    void requestMicrophone(Answer answer) override;
    bool accessibilityTrusted(Prompt prompt) override;
};

}  // namespace parlivo
