// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/GrabbedKey.h"

#include <set>

namespace parlivo::x11 {

/// Keeps the desktop's view of the keys true while a grab of one keyboard (KeyboardGrabs.h) is active: what
/// comes up meanwhile, commonly the modifier a moment before the key, would stay down for all others for
/// ever. Such keys are released in the keyboard's place once it is back.
class CutOffKeyboard {
  public:
    /// In the order of the events, all of them. Blocks for one round trip at the end of a hold in which
    /// another key came up.
    void follow(xcb_connection_t* connection, const GrabbedKey& key);

  private:
    std::optional<GrabbedKey> held_;  ///< the key whose press made the grab active
    std::set<xcb_keycode_t> released_;
};

}  // namespace parlivo::x11
