// SPDX-License-Identifier: MIT
#pragma once

#include "input/HotKeyManager.h"
#include "support/Keyboard.h"

#include <map>
#include <vector>

namespace parlivo::desktop {

/// The keys of a preset on the display's keyboard: the modifiers first, then the key that is held with them.
/// Throws std::out_of_range for a key that no preset has had so far: add its position here.
inline std::vector<xcb_keycode_t> chordOf(const Preset& preset) {
    static const std::map<KeyCode, xcb_keycode_t> positions{{VirtualKey::space, Key::space},
                                                            {VirtualKey::grave, Key::grave}};
    std::vector<xcb_keycode_t> keys;
    if ((preset.modifiers & HotKeyModifier::control) != 0) keys.push_back(Key::leftControl);
    if ((preset.modifiers & HotKeyModifier::option) != 0) keys.push_back(Key::leftAlt);
    if ((preset.modifiers & HotKeyModifier::command) != 0) keys.push_back(Key::leftSuper);
    if ((preset.modifiers & HotKeyModifier::shift) != 0) keys.push_back(Key::leftShift);
    keys.push_back(positions.at(preset.keyCode));
    return keys;
}

}  // namespace parlivo::desktop
