#pragma once

#include "platform/linux/x11/X11Keyboard.h"

namespace parlivo::x11 {

/// Keeps the user's hands out of what is typed, as long as it lives.
///
/// A held modifier would turn characters into shortcuts, our own hot key among them; a held hot key has the
/// whole keyboard grabbed, so that typed keys would end there; and a key that is down cannot be typed. So
/// keys that the user holds are waited for, one second at most, and then released in the user's place. They
/// are not pressed again: nobody could tell whether the user's release is still to come, and without it they
/// would stay down for ever.
///
/// Locked modifiers, all but Num Lock, are taken off at the beginning and put back at the end.
class KeyTruce {
  public:
    explicit KeyTruce(X11Keyboard& keyboard);
    ~KeyTruce();
    KeyTruce(const KeyTruce&) = delete;
    KeyTruce& operator=(const KeyTruce&) = delete;

    /// Waits again, for keys that were pressed in the meantime. Before each stroke; one round trip where
    /// nothing is held.
    void renew();

  private:
    X11Keyboard& keyboard_;
    Modifiers takenOff_ = 0;
};

}  // namespace parlivo::x11
