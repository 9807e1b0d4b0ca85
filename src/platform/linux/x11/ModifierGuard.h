// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/X11Keyboard.h"

namespace parlivo::x11 {

/// Keeps keys that the user holds, and lock keys, from changing what is typed.
///
/// A held modifier would turn characters into shortcuts, our own hot key among them; a held hot key has the
/// whole keyboard grabbed, so that typed keys would end there; and a key that is down cannot be typed. So
/// keys that the user holds are waited for, one second at most, and then released in the user's place. They
/// are not pressed again: whether the user's release is still to come cannot be known, and without it they
/// would stay down for ever.
///
/// Locked modifiers, all but Num Lock, are taken off by the constructor and put back by the destructor.
class ModifierGuard {
  public:
    explicit ModifierGuard(X11Keyboard& keyboard);
    ~ModifierGuard();
    ModifierGuard(const ModifierGuard&) = delete;
    ModifierGuard& operator=(const ModifierGuard&) = delete;

    /// Waits for keys that were pressed in the meantime. Before each stroke; one round trip if no key is
    /// held. The end of the program ends the wait, and then no key is released.
    void waitForHeldKeys();

  private:
    X11Keyboard& keyboard_;
    Modifiers takenOff_ = 0;
};

}  // namespace parlivo::x11
