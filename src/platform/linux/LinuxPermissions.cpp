#include "platform/linux/LinuxPermissions.h"

#include "platform/linux/sound/PulseMicrophone.h"

namespace parlivo {

MicrophoneStatus LinuxPermissions::microphone() {
    return PulseMicrophone().status();
}

void LinuxPermissions::requestMicrophone(Answer answer) {
    PulseMicrophone().request(answer);
}

}  // namespace parlivo
