// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/LayoutMap.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace parlivo::x11 {

/// Which characters sit on the keyboard's spare keys, two on each. Only plans: the caller
/// changes the keyboard itself.
class KeyPool {
  public:
    /// What a key of the pool carries; 0 where there is room.
    struct Pair {
        KeySymbol plain = 0;
        KeySymbol shifted = 0;

        bool operator==(const Pair&) const = default;
    };

    /// Adopts a key that an earlier run left assigned.
    void adopt(xcb_keycode_t code, Pair pair);

    /// Follows the keyboard: keys that are still as the pool made them stay, those that are spare join, all
    /// others leave.
    void reconcile(const KeyMap& map);

    /// Finds room for all of `symbols` at once, giving up those used least recently. Returns the keys that
    /// changed, or nullopt, with nothing changed, if there are more of them than the pool holds. Of the
    /// symbols of one call the first counts as used last.
    std::optional<std::set<xcb_keycode_t>> assign(const std::vector<KeySymbol>& symbols);

    std::optional<KeyStroke> find(KeySymbol symbol) const;

    /// The keys that carry something.
    std::map<xcb_keycode_t, Pair> occupied() const;
    /// How many characters fit.
    std::size_t capacity() const { return slots_.size(); }

    /// How the keyboard is to hold a pair.
    static KeyEntry entry(Pair pair);

  private:
    struct Slot {
        KeySymbol symbol = 0;
        std::uint64_t lastUse = 0;
    };
    /// Keys in their order, all plain places before all shifted ones: Shift is pressed only when needed.
    struct Place {
        bool shift = false;
        xcb_keycode_t code = 0;

        bool operator<(const Place& other) const {
            return std::pair(shift, code) < std::pair(other.shift, other.code);
        }
    };
    using Slots = std::map<Place, Slot>;

    Pair pair(xcb_keycode_t code) const;
    bool has(xcb_keycode_t code) const { return slots_.contains({false, code}); }
    void remove(xcb_keycode_t code);
    Slots::iterator holder(KeySymbol symbol);
    /// A place with room, else the one used least recently.
    Slots::iterator nextToGiveUp();

    Slots slots_;
    std::uint64_t uses_ = 0;
};

}  // namespace parlivo::x11
