// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeyboardSynthesizer.h"
#include "platform/linux/x11/ModifierGuard.h"
#include "platform/linux/x11/SpareKeyMap.h"
#include "platform/linux/x11/X11Keyboard.h"

#include <memory>
#include <optional>
#include <vector>

namespace parlivo::x11 {

/// The keys of one text or one shortcut.
class KeyEvents : public KeyEventSource {
  public:
    /// Null if the keyboard cannot be given all of `symbols` at once.
    static std::unique_ptr<KeyEventSource> make(X11Keyboard& keyboard, SpareKeyMap& keys,
                                                std::vector<KeySymbol> symbols);

    ~KeyEvents() override;
    KeyEvents(const KeyEvents&) = delete;
    KeyEvents& operator=(const KeyEvents&) = delete;

    Posted postKey(KeyCode key, KeyFlags flags) override;
    Posted postCharacter(QStringView character) override;

  private:
    KeyEvents(X11Keyboard& keyboard, SpareKeyMap& keys, std::vector<KeySymbol> symbols);
    void releaseShift();
    /// Whether keys can be sent now: no key is held, the map has the symbols of the text.
    bool ready();
    /// Another program may give the keyboard a new map in the middle of a text. False if the symbols of the
    /// text cannot be had any more.
    bool followMapChanges();
    /// All of them or, if one has no key, none.
    Posted post(const std::vector<KeySymbol>& symbols);
    void tap(xcb_keycode_t key);
    void tapShifted(xcb_keycode_t key, xcb_keycode_t shift);

    X11Keyboard& keyboard_;
    SpareKeyMap& keys_;
    std::vector<KeySymbol> symbols_;
    ModifierGuard guard_;
};

}  // namespace parlivo::x11
