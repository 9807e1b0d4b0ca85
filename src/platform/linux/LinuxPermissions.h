#pragma once

#include "platform/Permissions.h"

namespace parlivo {

/// Linux grants no permission a program: to hear means that the sound server lets us record, to type that the
/// X server lets us use its XTEST extension. Both are looked at afresh on each question.
class LinuxPermissions : public Permissions {
  public:
    MicrophoneStatus microphone() override;
    void requestMicrophone(Answer answer) override;
    bool accessibilityTrusted(Prompt prompt) override;
};

}  // namespace parlivo
