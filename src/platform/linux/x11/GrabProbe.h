// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeyCombination.h"
#include "platform/linux/x11/KeyboardGrabs.h"
#include "platform/linux/x11/XcbHandles.h"

#include <optional>
#include <span>

namespace parlivo::x11 {

/// Finds out cheaply whether a combination that was refused may be had now. For as long as the keyboards stay
/// the same.
///
/// On a connection of its own: where another thread waits for events, each answer wakes that one, too.
class GrabProbe {
  public:
    /// On the display that DISPLAY names. Blocks for some round trips.
    GrabProbe();

    /// Whether no other client holds one of the combinations on the master keyboard, or none on a single one:
    /// then a grab may come off (KeyGrab.h). Found out by grabs that are given back in the same breath, so
    /// that no key is lost to them. Locks are not looked at. True without a display or keyboard to ask.
    /// Blocks for one round trip.
    bool anyMayBeGrabbed(std::span<const KeyCombination> combinations) const;

  private:
    /// The requests for one combination, whose answers are on the way.
    struct Question {
        xcb_void_cookie_t onMaster;
        xcb_input_xi_passive_grab_device_cookie_t onKeyboard;
    };
    Question ask(const KeyCombination& combination) const;
    bool wasGranted(const Question& question) const;

    ConnectionHandle connection_;
    xcb_window_t root_ = XCB_NONE;
    std::optional<KeyboardId> keyboard_;
};

}  // namespace parlivo::x11
