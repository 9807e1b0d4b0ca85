// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/XcbHandles.h"
#include "platform/linux/x11/XcbQueries.h"

namespace parlivo::desktop {

/// The root window of the first screen.
inline xcb_window_t rootOf(xcb_connection_t* connection) {
    return x11::screenOf(connection, 0)->root;
}

/// Returns when the server has done all that was asked before on this connection.
inline void waitForServer(xcb_connection_t* connection) {
    x11::owned(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

}  // namespace parlivo::desktop
