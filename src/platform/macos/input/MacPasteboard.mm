// SPDX-License-Identifier: MIT
#include "platform/macos/input/MacPasteboard.h"

#include "platform/macos/base/Strings.h"

#include <AppKit/AppKit.h>

namespace parlivo {

namespace {

/// By agreement of clipboard managers (nspasteboard.org) they keep nothing that comes with this type.
NSString* const concealedType = @"org.nspasteboard.ConcealedType";

}  // namespace

PasteboardTexts MacPasteboard::texts() {
    const std::lock_guard lock(mutex_);
    NSString* const text = [NSPasteboard.generalPasteboard stringForType:NSPasteboardTypeString];
    if (text == nil) return {};
    return {{PasteboardPlace::Clipboard, fromNSString(text)}};
}

bool MacPasteboard::setText(const QString& text, History history) {
    const std::lock_guard lock(mutex_);
    return put(text, history);
}

void MacPasteboard::restore(const PasteboardTexts& texts) {
    const std::lock_guard lock(mutex_);
    const auto text = texts.constFind(PasteboardPlace::Clipboard);
    if (text == texts.constEnd() || NSPasteboard.generalPasteboard.changeCount != changeCount_) return;
    put(*text, History::Keep);
}

bool MacPasteboard::put(const QString& text, History history) {
    NSPasteboard* const board = NSPasteboard.generalPasteboard;
    [board clearContents];
    const bool taken = [board setString:toNSString(text) forType:NSPasteboardTypeString];
    if (history == History::Omit) [board setString:@"" forType:concealedType];
    changeCount_ = board.changeCount;
    return taken;
}

}  // namespace parlivo
