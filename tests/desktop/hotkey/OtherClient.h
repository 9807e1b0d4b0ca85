// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeyboardGrabs.h"
#include "platform/linux/x11/XcbHandles.h"

#include <cstddef>
#include <cstdint>

namespace parlivo::desktop {

/// Another program on the same display that wants keys, too. Returns from each operation when the server has
/// done it.
class OtherClient {
  public:
    OtherClient();

    /// The X error code, or 0.
    int grabKey(xcb_keycode_t key, std::uint16_t modifiers);
    void ungrabKey(xcb_keycode_t key, std::uint16_t modifiers);
    /// The same, and on each single keyboard, so that nobody else can have the combination.
    int grabKeyEverywhere(xcb_keycode_t key, std::uint16_t modifiers);
    void ungrabKeyEverywhere(xcb_keycode_t key, std::uint16_t modifiers);

    /// Key presses that came to this client so far.
    int keysReceived();

    /// As a window manager does that starts: sets its property on the root window.
    void announceWindowManager();

    bool grabKeyboard();
    void ungrabKeyboard();

    /// Makes a key the only one of a modifier (0 to 7 as in the core protocol). False when the server
    /// refuses.
    bool moveModifier(xcb_keycode_t key, std::size_t modifier);

    /// Takes all keyboards from the display, as when they are unplugged, or gives them back.
    void setKeyboardsEnabled(bool enabled);

  private:
    int grabOnOne(x11::KeyboardId keyboard, xcb_keycode_t key, std::uint16_t modifiers);
    xcb_window_t root() const;
    void sync() const;

    x11::ConnectionHandle connection_;
    int keysReceived_ = 0;
};

}  // namespace parlivo::desktop
