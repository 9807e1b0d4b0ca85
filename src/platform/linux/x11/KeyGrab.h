// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeyCombination.h"
#include "platform/linux/x11/KeyboardGrabs.h"
#include "platform/linux/x11/LockModifiers.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <variant>
#include <vector>

namespace parlivo::x11 {

/// A key combination taken from all other clients, whatever locks are on. Where another client holds it on
/// the master keyboard, as window managers do, it is taken on each single keyboard (KeyboardGrabs.h).
/// Released by the destructor. The connection must outlive it.
class KeyGrab {
  public:
    /// Takes the combination, or returns the X error code of the first lock combination that was refused (10,
    /// BadAccess, when another client has it); then none is taken. Blocks for some round trips.
    static std::variant<KeyGrab, int> take(xcb_connection_t* connection, xcb_window_t root,
                                           KeyCombination combination, const LockModifiers& locks);

    KeyGrab(KeyGrab&& other) noexcept;
    KeyGrab& operator=(KeyGrab&& other) noexcept;
    ~KeyGrab();
    KeyGrab(const KeyGrab&) = delete;
    KeyGrab& operator=(const KeyGrab&) = delete;

    const LockModifiers& locks() const { return locks_; }
    /// Whether it depends on which keyboards there are.
    bool isOnKeyboards() const { return !keyboards_.empty(); }

  private:
    KeyGrab(xcb_connection_t* connection, xcb_window_t root, KeyCombination combination,
            const LockModifiers& locks);
    /// The X error code, or 0.
    int grabAll();
    int grabOnMaster() const;
    int grabOnKeyboards();
    void release();
    void releaseOnMaster() const;
    void releaseOnKeyboards();

    xcb_connection_t* connection_;
    xcb_window_t root_;
    KeyCombination combination_;
    LockModifiers locks_;
    std::vector<KeyboardId> keyboards_;  ///< on which it is taken; empty = on the master
};

}  // namespace parlivo::x11
