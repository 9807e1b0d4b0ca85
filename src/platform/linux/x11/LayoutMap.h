// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeyMap.h"

#include <optional>
#include <set>
#include <unordered_map>

namespace parlivo::x11 {

/// How a character is entered: a key, with Shift or without.
struct KeyStroke {
    xcb_keycode_t code = 0;
    bool shift = false;

    bool operator==(const KeyStroke&) const = default;
};

/// What the user's layout enters with its keys alone or with Shift, in one group and with some modifiers
/// (Num Lock) locked. Dead keys and third levels are left out: what they give depends on the receiver.
class LayoutMap {
  public:
    struct State {
        std::uint8_t group = 0;
        Modifiers locked = 0;
    };

    LayoutMap() = default;
    /// Keys in `without` do not count as the layout's.
    LayoutMap(const KeyMap& map, State state, const std::set<xcb_keycode_t>& without);

    std::optional<KeyStroke> find(KeySymbol symbol) const;

  private:
    std::unordered_map<KeySymbol, KeyStroke> strokes_;
};

}  // namespace parlivo::x11
