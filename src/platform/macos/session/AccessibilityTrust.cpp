// SPDX-License-Identifier: MIT
#include "platform/macos/session/AccessibilityTrust.h"

#include "platform/macos/base/CoreFoundationHandle.h"

#include <ApplicationServices/ApplicationServices.h>

namespace parlivo {

bool isAccessibilityTrusted() {
    return AXIsProcessTrusted() != 0;
}

bool isAccessibilityTrustedOrAsk() {
    const void* key = kAXTrustedCheckOptionPrompt;
    const void* value = kCFBooleanTrue;
    const CoreFoundationHandle<CFDictionaryRef> options(CFDictionaryCreate(
        nullptr, &key, &value, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    return AXIsProcessTrustedWithOptions(options.get()) != 0;
}

}  // namespace parlivo
