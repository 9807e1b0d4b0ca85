#include "platform/linux/LinuxPermissions.h"

#include "platform/linux/sound/PulseMicrophone.h"
#include "platform/linux/x11/X11KeyboardSynthesizer.h"

namespace parlivo {

MicrophoneStatus LinuxPermissions::microphone() {
    return PulseMicrophone().status();
}

void LinuxPermissions::requestMicrophone(Answer answer) {
    PulseMicrophone().request(answer);
}

bool LinuxPermissions::accessibilityTrusted(Prompt) {
    // There is nobody to prompt: an X server lets a program type or does not.
    return x11TypingAllowed();
}

}  // namespace parlivo
