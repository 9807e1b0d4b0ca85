// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeyCombination.h"
#include "platform/linux/x11/LockModifiers.h"

#include <xcb/xinput.h>

#include <cstdint>
#include <optional>
#include <vector>

/// Passive grabs of single keyboards by version 2 of the X Input Extension (XI2proto, 2.0).
///
/// The server shows each key first to grabs of the keyboard that it was pressed on, then to grabs of the
/// master keyboard, on which window managers have theirs. A grab of the keyboard takes the key before any
/// window manager sees it, whoever came first, and no re-grab of theirs changes that. While such a grab is
/// active, the keyboard is cut off from the master: what it presses and releases the rest of the desktop does
/// not see.
namespace parlivo::x11 {

using KeyboardId = xcb_input_device_id_t;

/// Makes this client one of the extension; false if the server lacks it.
bool startInputExtension(xcb_connection_t* connection);

/// All keyboards that type into the focused window, the one of synthetic keys (XTEST) included.
std::vector<KeyboardId> attachedKeyboards(xcb_connection_t* connection);
/// From now on the connection gets XCB_INPUT_HIERARCHY events when a keyboard comes or goes.
void watchKeyboards(xcb_connection_t* connection, xcb_window_t root);

/// The X error code or grab status of the first refusal, else 0. Blocks for one round trip.
int grabOnKeyboard(xcb_connection_t* connection, xcb_window_t root, KeyboardId keyboard,
                   const KeyCombination& combination, const LockModifiers& locks);
void ungrabOnKeyboard(xcb_connection_t* connection, xcb_window_t root, KeyboardId keyboard,
                      const KeyCombination& combination, const LockModifiers& locks);

/// Whether the key is down on that keyboard; false if the keyboard is gone.
bool isDownOn(xcb_connection_t* connection, KeyboardId keyboard, xcb_keycode_t key);

}  // namespace parlivo::x11
