// SPDX-License-Identifier: MIT

// Our own declarations of what the adapters use of this system interface, so that they can be compiled and called where
// the system is not at hand. tests/platform/macos/check-declarations compares them with published type lists.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

typedef std::int32_t OSStatus;
typedef std::uint32_t OSType;
typedef std::uint32_t UInt32;
typedef unsigned long ItemCount;
typedef unsigned long ByteCount;
typedef UInt32 OptionBits;
typedef OSType EventParamName;
typedef OSType EventParamType;
typedef struct OpaqueEventRef* EventRef;
typedef struct OpaqueEventHandlerRef* EventHandlerRef;
typedef struct OpaqueEventHandlerCallRef* EventHandlerCallRef;
typedef struct OpaqueEventTargetRef* EventTargetRef;
typedef struct EventHotKeyRef_* EventHotKeyRef;
typedef OSStatus (*EventHandlerUPP)(EventHandlerCallRef, EventRef, void*);

// These lists of the system's give no values: they are from its documentation of the event manager.
enum {
    noErr = 0,
    eventNotHandledErr = -9874,
    kEventClassKeyboard = 'keyb',
    kEventHotKeyPressed = 5,
    kEventHotKeyReleased = 6,
    kEventParamDirectObject = '----',
    typeEventHotKeyID = 'hkid',
};

struct EventTypeSpec {
    OSType eventClass;
    UInt32 eventKind;
};

struct EventHotKeyID {
    OSType signature;
    UInt32 id;
};

EventTargetRef GetApplicationEventTarget(void);
OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler, ItemCount inNumTypes, const EventTypeSpec* inList, void* inUserData, EventHandlerRef* outRef);
OSStatus RemoveEventHandler(EventHandlerRef inHandlerRef);
OSStatus RegisterEventHotKey(UInt32 inHotKeyCode, UInt32 inHotKeyModifiers, EventHotKeyID inHotKeyID, EventTargetRef inTarget, OptionBits inOptions, EventHotKeyRef* outRef);
OSStatus UnregisterEventHotKey(EventHotKeyRef inHotKey);
UInt32 GetEventKind(EventRef inEvent);
OSStatus GetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inDesiredType, EventParamType* outActualType, ByteCount inBufferSize, ByteCount* outActualSize, void* outData);

}
