// SPDX-License-Identifier: MIT
#include "platform/linux/x11/LayoutMap.h"

#include <xkbcommon/xkbcommon.h>

namespace parlivo::x11 {

LayoutMap::LayoutMap(const KeyMap& map, State state, const std::set<xcb_keycode_t>& without) {
    const auto shifted = static_cast<Modifiers>(state.locked | XCB_MOD_MASK_SHIFT);
    // The lowest code wins: it is the key that a typist would use rather than one of a special keyboard.
    for (unsigned code = map.first(); code <= map.last(); ++code) {
        const auto key = static_cast<xcb_keycode_t>(code);
        if (without.contains(key)) continue;
        const KeySymbol plain = map.symbol(key, state.group, state.locked);
        if (plain != XKB_KEY_NoSymbol) strokes_.emplace(canonical(plain), KeyStroke{key, false});
        const KeySymbol upper = map.symbol(key, state.group, shifted);
        if (upper != XKB_KEY_NoSymbol) strokes_.emplace(canonical(upper), KeyStroke{key, true});
    }
}

std::optional<KeyStroke> LayoutMap::find(KeySymbol symbol) const {
    const auto found = strokes_.find(symbol);
    if (found == strokes_.end()) return std::nullopt;
    return found->second;
}

}  // namespace parlivo::x11
