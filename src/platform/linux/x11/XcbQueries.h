// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string_view>

/// Questions to an X server that every client of it has.
namespace parlivo::x11 {

/// The screen of this number (the one after the dot in DISPLAY), or the last one if there are fewer.
xcb_screen_t* screenOf(xcb_connection_t* connection, int number);

/// The atom of this name, made if there is none; XCB_ATOM_NONE on a broken connection. One round trip.
xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name);

/// A window that never shows and takes no input: an address for events and selections.
xcb_window_t makeInvisibleWindow(xcb_connection_t* connection, xcb_window_t root,
                                 xcb_event_mask_t events = XCB_EVENT_MASK_NO_EVENT);

/// Makes this client one of the X Keyboard Extension and returns the type of the extension's events; nullopt
/// if the server lacks the extension.
std::optional<std::uint8_t> startKeyboardExtension(xcb_connection_t* connection);

}  // namespace parlivo::x11
