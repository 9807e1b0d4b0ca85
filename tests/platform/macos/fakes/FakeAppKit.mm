// SPDX-License-Identifier: MIT

// AppKit and ServiceManagement, as far as the adapters use them.
#include "platform/macos/fakes/Calls.h"
#include "platform/macos/fakes/FakeFoundation.h"
#include "platform/macos/fakes/FakeObjects.h"

#include <AppKit/AppKit.h>
#include <ServiceManagement/ServiceManagement.h>

using namespace parlivo;

NSString* const NSPasteboardTypeString = @"public.utf8-plain-text";

namespace {

template <typename Object>
Object* alone() {
    static Object* const object = [[Object alloc] init];
    return object;
}

NSRect frameOf(const mac::Rectangle& rectangle) {
    return {{rectangle.x, rectangle.y}, {rectangle.width, rectangle.height}};
}

std::map<const void*, std::size_t>& screenNumbers() {
    static std::map<const void*, std::size_t> numbers;
    return numbers;
}

NSScreen* screen(std::size_t number) {
    NSScreen* const made = [[NSScreen alloc] init];
    screenNumbers()[(__bridge const void*)made] = number;
    return made;
}

std::map<const void*, NSWindow*>& windows() {
    static std::map<const void*, NSWindow*> all;
    return all;
}

std::map<const void*, QStringList>& windowCalls() {
    static std::map<const void*, QStringList> all;
    return all;
}

void told(NSWindow* window, const QString& what) {
    windowCalls()[(__bridge const void*)window].append(what);
}

}  // namespace

namespace parlivo::mac {

quintptr makeView() {
    NSView* const view = [[NSView alloc] init];
    windows()[(__bridge const void*)view] = [[NSWindow alloc] init];
    return reinterpret_cast<quintptr>((__bridge void*)view);
}

QStringList windowOf(quintptr view) {
    return windowCalls()[(__bridge const void*)windows()[reinterpret_cast<const void*>(view)]];
}

}  // namespace parlivo::mac

@implementation NSPasteboard
+ (NSPasteboard*)generalPasteboard {
    return alone<NSPasteboard>();
}
- (NSInteger)changeCount {
    return mac::world().changeCount;
}
- (NSInteger)clearContents {
    mac::record(QStringLiteral("clear"));
    mac::world().pasteboard.clear();
    return ++mac::world().changeCount;
}
- (BOOL)setString:(NSString*)string forType:(NSString*)dataType {
    mac::record(QStringLiteral("set «%1» as %2").arg(mac::textOf(string), mac::textOf(dataType)));
    if (mac::world().refusesPasteboard) return NO;
    mac::world().pasteboard[mac::textOf(dataType)] = mac::textOf(string);
    return YES;
}
- (NSString*)stringForType:(NSString*)dataType {
    const auto found = mac::world().pasteboard.find(mac::textOf(dataType));
    return found == mac::world().pasteboard.end() ? nil : mac::makeString(found->second);
}
@end

@implementation NSSound
+ (NSSound*)soundNamed:(NSString*)name {
    mac::record(QStringLiteral("sound %1").arg(mac::textOf(name)));
    return mac::textOf(name) == QLatin1String("Nonsense") ? nil : alone<NSSound>();
}
- (BOOL)play {
    mac::record(QStringLiteral("play"));
    return YES;
}
@end

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
    return alone<NSWorkspace>();
}
- (BOOL)openURL:(NSURL*)url {
    mac::record(QStringLiteral("open %1").arg(mac::valueOf(url).toString()));
    return YES;
}
@end

@implementation NSScreen
+ (NSArray<NSScreen*>*)screens {
    std::vector<id> all;
    for (std::size_t number = 0; number < mac::world().screenFrames.size(); ++number)
        all.push_back(screen(number));
    return mac::makeArray(all);
}
+ (NSScreen*)mainScreen {
    return mac::world().mainScreen ? screen(*mac::world().mainScreen) : nil;
}
- (NSRect)frame {
    return frameOf(mac::world().screenFrames.at(screenNumbers().at((__bridge const void*)self)));
}
- (NSRect)visibleFrame {
    return frameOf(mac::world().visibleFrames.at(screenNumbers().at((__bridge const void*)self)));
}
@end

@implementation NSWindow
- (NSWindowLevel)level {
    return 0;
}
- (void)setLevel:(NSWindowLevel)level {
    told(self, QStringLiteral("level %1").arg(level));
}
- (NSWindowCollectionBehavior)collectionBehavior {
    return 0;
}
- (void)setCollectionBehavior:(NSWindowCollectionBehavior)behavior {
    told(self, QStringLiteral("behaviour %1").arg(behavior));
}
- (NSWindowStyleMask)styleMask {
    return 0;
}
- (void)setStyleMask:(NSWindowStyleMask)mask {
    told(self, QStringLiteral("style %1").arg(mask));
}
- (BOOL)hidesOnDeactivate {
    return YES;
}
- (void)setHidesOnDeactivate:(BOOL)hides {
    told(self, QStringLiteral("hides when inactive %1").arg(hides));
}
- (BOOL)ignoresMouseEvents {
    return NO;
}
- (void)setIgnoresMouseEvents:(BOOL)ignores {
    told(self, QStringLiteral("ignores mouse %1").arg(ignores));
}
- (BOOL)hasShadow {
    return NO;
}
- (void)setHasShadow:(BOOL)shadow {
    told(self, QStringLiteral("shadow %1").arg(shadow));
}
- (void)orderFrontRegardless {
    told(self, QStringLiteral("front"));
}
@end

@implementation NSView
- (NSWindow*)window {
    return windows().at((__bridge const void*)self);
}
@end

@implementation SMAppService
+ (SMAppService*)mainAppService {
    return alone<SMAppService>();
}
- (SMAppServiceStatus)status {
    return static_cast<SMAppServiceStatus>(mac::world().loginStatus);
}
- (BOOL)registerAndReturnError:(NSError**)error {
    mac::record(QStringLiteral("register"));
    if (!mac::world().succeeds) *error = mac::makeError();
    return mac::world().succeeds ? YES : NO;
}
- (BOOL)unregisterAndReturnError:(NSError**)error {
    mac::record(QStringLiteral("unregister"));
    if (!mac::world().succeeds) *error = mac::makeError();
    return mac::world().succeeds ? YES : NO;
}
@end
