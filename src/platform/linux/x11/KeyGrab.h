// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/LockModifiers.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <variant>

namespace parlivo::x11 {

/// A key with exact modifiers.
struct KeyCombination {
    xcb_keycode_t key = 0;
    std::uint16_t modifiers = 0;  ///< core modifier mask, without locks
};

/// A key combination taken from all other clients, whatever locks are on. Released by the destructor. The
/// connection must outlive it.
class KeyGrab {
  public:
    /// Takes the combination, or returns the X error code of the first lock combination that was refused (10,
    /// BadAccess, when another client has it); then none is taken. Blocks for one round trip.
    static std::variant<KeyGrab, int> take(xcb_connection_t* connection, xcb_window_t root,
                                           KeyCombination combination, const LockModifiers& locks);

    KeyGrab(KeyGrab&& other) noexcept;
    KeyGrab& operator=(KeyGrab&& other) noexcept;
    ~KeyGrab();
    KeyGrab(const KeyGrab&) = delete;
    KeyGrab& operator=(const KeyGrab&) = delete;

    const LockModifiers& locks() const { return locks_; }

  private:
    KeyGrab(xcb_connection_t* connection, xcb_window_t root, KeyCombination combination,
            const LockModifiers& locks);
    /// The X error code, or 0.
    int grabAll() const;
    void release();

    xcb_connection_t* connection_;
    xcb_window_t root_;
    KeyCombination combination_;
    LockModifiers locks_;
};

}  // namespace parlivo::x11
