// SPDX-License-Identifier: MIT

// Our own declarations of what the adapters use of this system interface, so that they can be compiled and called where
// the system is not at hand. tests/platform/macos/check-declarations compares them with published type lists.
#pragma once

#include <Foundation/Foundation.h>

typedef NSInteger NSWindowLevel;

extern "C" {

extern NSString* const NSPasteboardTypeString;
const NSWindowLevel NSStatusWindowLevel = 25;

}

@interface NSPasteboard : NSObject
@property (class, readonly) NSPasteboard* generalPasteboard;
@property (readonly) NSInteger changeCount;
- (NSInteger)clearContents;
- (BOOL)setString:(NSString*)string forType:(NSString*)dataType;
- (NSString*)stringForType:(NSString*)dataType;
@end

@interface NSSound : NSObject
+ (NSSound*)soundNamed:(NSString*)name;
- (BOOL)play;
@end

@interface NSWorkspace : NSObject
@property (class, readonly) NSWorkspace* sharedWorkspace;
- (BOOL)openURL:(NSURL*)url;
@end

@interface NSScreen : NSObject
@property (class, readonly) NSArray<NSScreen*>* screens;
@property (class, readonly) NSScreen* mainScreen;
@property (readonly) NSRect frame;
@property (readonly) NSRect visibleFrame;
@end

NS_OPTIONS(NSUInteger, NSWindowCollectionBehavior) {
    NSWindowCollectionBehaviorCanJoinAllSpaces = 1,
    NSWindowCollectionBehaviorFullScreenAuxiliary = 256,
};

NS_OPTIONS(NSUInteger, NSWindowStyleMask) {
    NSWindowStyleMaskNonactivatingPanel = 128,
};

@interface NSWindow : NSObject
@property NSWindowLevel level;
@property NSWindowCollectionBehavior collectionBehavior;
@property NSWindowStyleMask styleMask;
@property BOOL hidesOnDeactivate;
@property BOOL ignoresMouseEvents;
@property BOOL hasShadow;
- (void)orderFrontRegardless;
@end

@interface NSView : NSObject
@property (readonly) NSWindow* window;
@end
