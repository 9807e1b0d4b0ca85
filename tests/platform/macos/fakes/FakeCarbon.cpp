// SPDX-License-Identifier: MIT
#include "platform/macos/fakes/FakeCarbon.h"

#include "platform/macos/fakes/Calls.h"

#include <Carbon/Carbon.h>

#include <cstring>
#include <set>

using namespace parlivo;

struct OpaqueEventTargetRef {};

struct OpaqueEventRef {
    UInt32 kind = 0;
    EventHotKeyID id;
};

struct OpaqueEventHandlerRef {
    EventHandlerUPP handler = nullptr;
    void* userData = nullptr;
};

struct EventHotKeyRef_ {};

namespace {

OpaqueEventTargetRef application;
std::set<EventHandlerRef> handlers;
std::set<EventHotKeyRef> hotKeys;

QString fourCharacters(UInt32 code) {
    QString text;
    for (int shift = 24; shift >= 0; shift -= 8) text += QLatin1Char(static_cast<char>(code >> shift & 0xFF));
    return text;
}

}  // namespace

namespace parlivo::mac {

CarbonScript& carbon() {
    static CarbonScript script;
    return script;
}

bool deliverHotKey(bool pressed, std::uint32_t signature, std::uint32_t id) {
    OpaqueEventRef event{pressed ? UInt32{kEventHotKeyPressed} : UInt32{kEventHotKeyReleased},
                         {signature, id}};
    for (const EventHandlerRef handler : handlers) {
        if (handler->handler(nullptr, &event, handler->userData) == noErr) return true;
    }
    return false;
}

int hotKeysInForce() {
    return static_cast<int>(hotKeys.size());
}

int handlersInForce() {
    return static_cast<int>(handlers.size());
}

void resetCarbon() {
    handlers.clear();
    hotKeys.clear();
    carbon() = {};
}

}  // namespace parlivo::mac

EventTargetRef GetApplicationEventTarget() {
    return &application;
}

OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler, ItemCount inNumTypes,
                             const EventTypeSpec* inList, void* inUserData, EventHandlerRef* outRef) {
    QString call = inTarget == &application ? QStringLiteral("install") : QStringLiteral("install elsewhere");
    for (ItemCount i = 0; i < inNumTypes; ++i)
        call += QStringLiteral(" %1:%2").arg(fourCharacters(inList[i].eventClass)).arg(inList[i].eventKind);
    mac::record(call);
    *outRef = mac::keep(OpaqueEventHandlerRef{inHandler, inUserData});
    handlers.insert(*outRef);
    return noErr;
}

OSStatus RemoveEventHandler(EventHandlerRef inHandlerRef) {
    mac::record(handlers.erase(inHandlerRef) == 1 ? QStringLiteral("remove")
                                                  : QStringLiteral("remove a stranger"));
    return noErr;
}

OSStatus RegisterEventHotKey(UInt32 inHotKeyCode, UInt32 inHotKeyModifiers, EventHotKeyID inHotKeyID,
                             EventTargetRef inTarget, OptionBits inOptions, EventHotKeyRef* outRef) {
    mac::record(QStringLiteral("register key %1 mask 0x%2 as %3/%4 options %5%6")
                    .arg(inHotKeyCode)
                    .arg(inHotKeyModifiers, 4, 16, QLatin1Char('0'))
                    .arg(fourCharacters(inHotKeyID.signature))
                    .arg(inHotKeyID.id)
                    .arg(inOptions)
                    .arg(inTarget == &application ? QString() : QStringLiteral(" elsewhere")));
    if (mac::carbon().refuseWith != 0) return mac::carbon().refuseWith;
    *outRef = mac::keep(EventHotKeyRef_());
    hotKeys.insert(*outRef);
    return noErr;
}

OSStatus UnregisterEventHotKey(EventHotKeyRef inHotKey) {
    mac::record(hotKeys.erase(inHotKey) == 1 ? QStringLiteral("unregister")
                                             : QStringLiteral("unregister a stranger"));
    return noErr;
}

UInt32 GetEventKind(EventRef inEvent) {
    return inEvent->kind;
}

OSStatus GetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inDesiredType,
                           EventParamType*, ByteCount inBufferSize, ByteCount*, void* outData) {
    if (inName != kEventParamDirectObject || inDesiredType != typeEventHotKeyID ||
        inBufferSize != sizeof(EventHotKeyID))
        return eventNotHandledErr;
    std::memcpy(outData, &inEvent->id, sizeof(EventHotKeyID));
    return noErr;
}
