// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

/// A key that enters nothing and means nothing, to let an application know that a key was pressed.
namespace parlivo::x11 {

/// The kernel gives its code 0 (KEY_RESERVED, + 8 in X) to no key. The pool of spare keys leaves it out.
inline constexpr xcb_keycode_t noOpKey = 8;

/// Whether it can be tapped: the server lets keys be synthesised, and no program has given it a meaning.
bool noOpKeyAvailable(xcb_connection_t* connection);

/// Presses and releases it. Only where it is available.
void tapNoOpKey(xcb_connection_t* connection);

}  // namespace parlivo::x11
