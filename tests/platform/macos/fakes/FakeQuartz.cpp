// SPDX-License-Identifier: MIT
#include "platform/macos/fakes/FakeQuartz.h"

#include "platform/macos/fakes/Calls.h"

#include <ApplicationServices/ApplicationServices.h>

using namespace parlivo;

struct __CGEventSource {};

struct __CGEvent {
    CGKeyCode key = 0;
    bool down = false;
    CGEventFlags flags = 0xBAD;  // what the user happens to hold
    QString text;
};

struct __CFDictionary {};
struct __CFBoolean {};
struct __CFString {};
struct CFDictionaryKeyCallBacks {};
struct CFDictionaryValueCallBacks {};

namespace {

const __CFString prompt;
const __CFBoolean yes;

QString quoted(const QString& text) {
    return text.isEmpty() ? QString() : QStringLiteral(" «%1» of %2").arg(text).arg(text.size());
}

}  // namespace

namespace parlivo::mac {

QuartzScript& quartz() {
    static QuartzScript script;
    return script;
}

}  // namespace parlivo::mac

const CFStringRef kAXTrustedCheckOptionPrompt = &prompt;
const CFBooleanRef kCFBooleanTrue = &yes;
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};

CGEventSourceRef CGEventSourceCreate(CGEventSourceStateID stateID) {
    mac::record(QStringLiteral("source %1").arg(stateID));
    if (!mac::quartz().sources) return nullptr;
    auto* const source = mac::keep(__CGEventSource());
    mac::created(source);
    return source;
}

CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef source, CGKeyCode virtualKey, bool keyDown) {
    if (mac::quartz().eventsToRefuse > 0) {
        --mac::quartz().eventsToRefuse;
        return nullptr;
    }
    auto* const event = mac::keep(__CGEvent{virtualKey, keyDown, source == nullptr ? 0xBADU : 0x100U, {}});
    mac::created(event);
    return event;
}

void CGEventSetFlags(CGEventRef event, CGEventFlags flags) {
    event->flags = flags;
}

void CGEventKeyboardSetUnicodeString(CGEventRef event, UniCharCount stringLength,
                                     const UniChar* unicodeString) {
    event->text = QString::fromUtf16(reinterpret_cast<const char16_t*>(unicodeString),
                                     static_cast<qsizetype>(stringLength));
}

void CGEventPost(CGEventTapLocation tap, CGEventRef event) {
    mac::record(QStringLiteral("%1 %2 flags %3%4 at %5")
                    .arg(event->down ? QStringLiteral("down") : QStringLiteral("up"))
                    .arg(event->key)
                    .arg(event->flags)
                    .arg(quoted(event->text))
                    .arg(tap));
}

void CFRelease(CFTypeRef object) {
    mac::released(object);
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex numValues,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
    const bool prompts = numValues == 1 && keys[0] == kAXTrustedCheckOptionPrompt &&
                         values[0] == kCFBooleanTrue && keyCallBacks == &kCFTypeDictionaryKeyCallBacks &&
                         valueCallBacks == &kCFTypeDictionaryValueCallBacks;
    mac::record(prompts ? QStringLiteral("options: prompt = true")
                        : QStringLiteral("options: something else"));
    auto* const dictionary = mac::keep(__CFDictionary());
    mac::created(dictionary);
    return dictionary;
}

Boolean AXIsProcessTrusted() {
    mac::record(QStringLiteral("trusted?"));
    return mac::quartz().trusted;
}

Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) {
    mac::record(options == nullptr ? QStringLiteral("trusted? without options")
                                   : QStringLiteral("trusted? with options"));
    return mac::quartz().trusted;
}
