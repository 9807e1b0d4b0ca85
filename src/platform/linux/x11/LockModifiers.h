// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace parlivo::x11 {

/// The modifiers that stay on by themselves (Caps Lock, Num Lock, Scroll Lock) on one display, as core
/// modifier masks. Which modifier Num Lock and Scroll Lock are is a matter of the keyboard map, if they are
/// any.
class LockModifiers {
  public:
    LockModifiers() = default;
    /// Asks the server; blocks for two round trips.
    explicit LockModifiers(xcb_connection_t* connection);

    std::uint16_t mask() const { return mask_; }
    /// Every set of locks that can be on, the empty one included.
    std::vector<std::uint16_t> combinations() const;

    bool operator==(const LockModifiers&) const = default;

  private:
    std::uint16_t mask_ = XCB_MOD_MASK_LOCK;
};

}  // namespace parlivo::x11
