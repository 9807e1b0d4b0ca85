// SPDX-License-Identifier: MIT
#include "platform/macos/desktop/MacScreens.h"

#include <AppKit/AppKit.h>

namespace parlivo {

/// The system counts upwards from the bottom of the first screen, the toolkit downwards from its top.
std::optional<QRect> MacScreens::mainVisibleFrame() {
    NSScreen* const screen = NSScreen.mainScreen;
    if (screen == nil) return std::nullopt;
    const NSRect first = NSScreen.screens.firstObject.frame;
    const NSRect visible = screen.visibleFrame;
    const double top = first.origin.y + first.size.height - (visible.origin.y + visible.size.height);
    return QRectF(visible.origin.x, top, visible.size.width, visible.size.height).toRect();
}

}  // namespace parlivo
