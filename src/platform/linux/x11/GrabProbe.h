// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeyCombination.h"
#include "platform/linux/x11/KeyboardGrabs.h"

#include <span>

namespace parlivo::x11 {

/// Whether no other client holds one of the combinations on the master keyboard, or none on `keyboard`: then
/// a grab may come off (KeyGrab.h). Found out by grabs that are given back in the same breath, so that no key
/// is lost to them. Locks are not looked at. Blocks for one round trip.
bool anyMayBeGrabbed(xcb_connection_t* connection, xcb_window_t root, KeyboardId keyboard,
                     std::span<const KeyCombination> combinations);

}  // namespace parlivo::x11
