#pragma once

#include "platform/Permissions.h"
#include "platform/linux/desktop/Desktop.h"

namespace parlivo {

/// Linux grants no permission a program: to hear means that the sound server lets us record, to type that the
/// desktop has a way to put text into the focused window. Both are looked at afresh on each question.
class LinuxPermissions : public Permissions {
  public:
    explicit LinuxPermissions(Desktop& desktop) : desktop_(desktop) {}

    MicrophoneStatus microphone() override;
    void requestMicrophone(Answer answer) override;
    /// There is no system dialog to prompt with.
    bool accessibilityTrusted(Prompt) override { return desktop_.canDeliverText(); }

  private:
    Desktop& desktop_;
};

}  // namespace parlivo
