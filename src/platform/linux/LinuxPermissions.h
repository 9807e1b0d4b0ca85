// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Permissions.h"
#include "platform/linux/desktop/Desktop.h"

namespace parlivo {

class PulseMicrophone;

/// Linux grants no permission a program: to hear means that the sound server lets us record, to type that the
/// desktop has a way to put text into the focused window. Both are looked at afresh on each question.
class LinuxPermissions : public Permissions {
  public:
    /// Both must outlive this.
    LinuxPermissions(Desktop& desktop, PulseMicrophone& microphone)
        : desktop_(desktop), microphone_(microphone) {}

    MicrophoneStatus microphone() override;
    void observeMicrophone(const QObject* owner, std::function<void(MicrophoneStatus)> changed) override;
    void requestMicrophone(MicrophoneCheck check, Answer answer) override;
    /// There is no system dialog to prompt with.
    bool accessibilityTrusted(Prompt) override { return desktop_.canDeliverText(); }

  private:
    Desktop& desktop_;
    PulseMicrophone& microphone_;
};

}  // namespace parlivo
