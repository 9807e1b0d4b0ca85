// SPDX-License-Identifier: MIT
#include "platform/linux/LinuxPermissions.h"

#include "platform/linux/sound/PulseMicrophone.h"

#include <utility>

namespace parlivo {

MicrophoneStatus LinuxPermissions::microphone() {
    return microphone_.status();
}

void LinuxPermissions::observeMicrophone(const QObject* owner,
                                         std::function<void(MicrophoneStatus)> changed) {
    microphone_.observe(owner, std::move(changed));
}

void LinuxPermissions::requestMicrophone(MicrophoneCheck check, Answer answer) {
    microphone_.request(check, answer);
}

}  // namespace parlivo
