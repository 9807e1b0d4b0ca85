// SPDX-License-Identifier: MIT

// Our own declarations of what the adapters use of this system interface, so that they can be compiled and called where
// the system is not at hand. tests/platform/macos/check-declarations compares them with published type lists.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

// Accessibility
extern const CFStringRef kAXTrustedCheckOptionPrompt;

Boolean AXIsProcessTrusted(void);
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options);

// Quartz event services
typedef struct __CGEvent* CGEventRef;
typedef struct __CGEventSource* CGEventSourceRef;
typedef std::uint16_t CGKeyCode;

CF_ENUM(std::int32_t, CGEventSourceStateID) {
    kCGEventSourceStateCombinedSessionState = 0,
};

CF_ENUM(std::uint32_t, CGEventTapLocation) {
    kCGHIDEventTap = 0,
};

CF_OPTIONS(std::uint64_t, CGEventFlags) {
    kCGEventFlagMaskCommand = 1048576,
};

CGEventSourceRef CGEventSourceCreate(CGEventSourceStateID stateID);
CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef source, CGKeyCode virtualKey, bool keyDown);
void CGEventSetFlags(CGEventRef event, CGEventFlags flags);
void CGEventKeyboardSetUnicodeString(CGEventRef event, UniCharCount stringLength, const UniChar* unicodeString);
void CGEventPost(CGEventTapLocation tap, CGEventRef event);

}
