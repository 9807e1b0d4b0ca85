// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/CutOffKeyboard.h"
#include "support/Lifetime.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace parlivo::x11 {

/// Reads what the display tells of the grabbed keys, in a thread of its own, and passes it on to the main
/// thread.
///
/// The focused window sees the modifiers go down, but not the key. Many applications open a menu when Alt or
/// Super is pressed and released alone, and what is typed next would go there. So before the modifier comes
/// up they are shown another key, which has no meaning (NoOpKey.h): at the press where the grab is of a
/// single keyboard, which lets the keys of others through, else when the key comes up. That cannot wait for
/// the main thread, which may be opening or closing the microphone, nor for one round trip.
class HotKeyEvents {
  public:
    struct Handlers {
        std::function<void(const xcb_generic_event_t&)> event;
        std::function<void(std::uint32_t token)> echo;
        std::function<void()> end;  ///< the connection is broken
    };

    /// The handlers run on the main thread. No other code may take events from `connection`, which must
    /// outlive this.
    HotKeyEvents(xcb_connection_t* connection, xcb_window_t root, Handlers handlers);
    /// Ends the conversation with the display; the connection is broken afterwards.
    ~HotKeyEvents();
    HotKeyEvents(const HotKeyEvents&) = delete;
    HotKeyEvents& operator=(const HotKeyEvents&) = delete;

    /// The token comes back through the handler, after everything that the display has told so far.
    void askForEcho(std::uint32_t token) const;

  private:
    void read();
    std::function<void()> jobFor(const std::shared_ptr<const xcb_generic_event_t>& event) const;
    void keepMenusShut(const GrabbedKey& key);
    void beginHold(const GrabbedKey& key);

    xcb_connection_t* connection_;
    const xcb_window_t window_;  ///< invisible, the address of echoes
    const Handlers handlers_;
    // In the thread:
    CutOffKeyboard cutOff_;
    std::optional<GrabbedKey> held_;
    bool canShowKey_ = false;  ///< during this hold
    const Lifetime lifetime_;
    std::thread thread_;
};

}  // namespace parlivo::x11
