// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeyboardGrabs.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>

namespace parlivo::x11 {

/// A key that went down or up under a grab of ours, whichever kind of grab reports it.
struct GrabbedKey {
    enum class Edge { Press, Release };

    Edge edge = Edge::Press;
    xcb_keycode_t key = 0;
    std::uint16_t state =
        0;  ///< core modifier mask before the edge, with locks; of that keyboard alone if there is one
    KeyboardId keyboard = 0;  ///< 0 = the master: the grab is a core one
};

/// What an event tells of a grabbed key; nullopt if it tells of something else. Repeats of a held key count
/// as presses.
std::optional<GrabbedKey> grabbedKeyOf(xcb_connection_t* connection, const xcb_generic_event_t& event);

/// Whether an event tells that a keyboard came or went.
bool isKeyboardChange(xcb_connection_t* connection, const xcb_generic_event_t& event);

}  // namespace parlivo::x11
