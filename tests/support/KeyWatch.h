// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/XcbHandles.h"

#include <chrono>

namespace parlivo::desktop {

/// Sees every key press on the display, whichever program receives it.
class KeyWatch {
  public:
    /// From now on. Throws Error when there is no display, or one without the input extension.
    KeyWatch();

    /// Forgets what was pressed so far.
    void forget();
    /// Waits until this key is or has been pressed; nothing else happens on this thread meanwhile. False if
    /// that does not happen in time.
    bool waitFor(xcb_keycode_t key, std::chrono::milliseconds limit);

  private:
    x11::ConnectionHandle connection_;
};

}  // namespace parlivo::desktop
