// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>

namespace parlivo::x11 {

/// A key with exact modifiers.
struct KeyCombination {
    xcb_keycode_t key = 0;
    std::uint16_t modifiers = 0;  ///< core modifier mask, without locks
};

}  // namespace parlivo::x11
