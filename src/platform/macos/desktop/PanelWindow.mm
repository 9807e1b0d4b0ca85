// SPDX-License-Identifier: MIT
#include "platform/macos/desktop/PanelWindow.h"

#include <AppKit/AppKit.h>

namespace parlivo {

namespace {

NSWindow* windowOf(quintptr view) {
    return ((__bridge NSView*)reinterpret_cast<void*>(view)).window;
}

}  // namespace

void makePanelOf(quintptr view) {
    NSWindow* const window = windowOf(view);
    window.styleMask = window.styleMask | NSWindowStyleMaskNonactivatingPanel;
    window.level = NSStatusWindowLevel;
    window.collectionBehavior =
        NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorFullScreenAuxiliary;
    window.hidesOnDeactivate = NO;
    window.ignoresMouseEvents = YES;
    window.hasShadow = YES;
}

void orderFront(quintptr view) {
    [windowOf(view) orderFrontRegardless];
}

}  // namespace parlivo
