// SPDX-License-Identifier: MIT
#include "platform/macos/session/MacPermissions.h"

#include "platform/macos/session/AccessibilityTrust.h"

#include <AVFoundation/AVFoundation.h>

#include <utility>

namespace parlivo {

MicrophoneStatus MacPermissions::microphone() {
    switch ([AVCaptureDevice authorizationStatusForMediaType:AVMediaTypeAudio]) {
        case AVAuthorizationStatusAuthorized:
            return MicrophoneStatus::Authorised;
        case AVAuthorizationStatusNotDetermined:
            return MicrophoneStatus::NotAsked;
        case AVAuthorizationStatusDenied:
        case AVAuthorizationStatusRestricted:
            break;
    }
    return MicrophoneStatus::Denied;
}

void MacPermissions::requestMicrophone(MicrophoneCheck /*check*/, Answer answer) {
    const Answer kept = std::move(answer);
    [AVCaptureDevice requestAccessForMediaType:AVMediaTypeAudio
                             completionHandler:^(BOOL granted) {
                               kept(granted != NO);
                             }];
}

bool MacPermissions::accessibilityTrusted(Prompt prompt) {
    return prompt == Prompt::Yes ? isAccessibilityTrustedOrAsk() : isAccessibilityTrusted();
}

}  // namespace parlivo
