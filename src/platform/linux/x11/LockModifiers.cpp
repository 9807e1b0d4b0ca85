// SPDX-License-Identifier: MIT
#include "platform/linux/x11/LockModifiers.h"

#include "platform/linux/x11/XcbHandles.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace parlivo::x11 {

namespace {

constexpr std::array<xcb_keysym_t, 2> lockKeys{XKB_KEY_Num_Lock, XKB_KEY_Scroll_Lock};
constexpr std::size_t modifierCount = 8;

bool givesLock(const xcb_get_keyboard_mapping_reply_t& map, xcb_keycode_t first, xcb_keycode_t key) {
    if (key < first) return false;  // the table of modifiers is padded with zeros
    const std::span keysyms(xcb_get_keyboard_mapping_keysyms(&map),
                            static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(&map)));
    const std::size_t width = map.keysyms_per_keycode;
    const auto own = keysyms.subspan((key - first) * width, width);
    return std::ranges::find_first_of(own, lockKeys) != own.end();
}

}  // namespace

LockModifiers::LockModifiers(xcb_connection_t* connection) {
    const auto* const setup = xcb_get_setup(connection);
    const xcb_keycode_t first = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - first + 1);
    const auto modifiersCookie = xcb_get_modifier_mapping(connection);
    const auto keysCookie = xcb_get_keyboard_mapping(connection, first, count);
    const auto modifiers = owned(xcb_get_modifier_mapping_reply(connection, modifiersCookie, nullptr));
    const auto keys = owned(xcb_get_keyboard_mapping_reply(connection, keysCookie, nullptr));
    if (!modifiers || !keys) return;

    const std::size_t width = modifiers->keycodes_per_modifier;
    const std::span table(xcb_get_modifier_mapping_keycodes(modifiers.get()), modifierCount * width);
    for (std::size_t modifier = 0; modifier < modifierCount; ++modifier) {
        const auto own = table.subspan(modifier * width, width);
        const bool locks =
            std::ranges::any_of(own, [&](xcb_keycode_t key) { return givesLock(*keys, first, key); });
        if (locks) mask_ = static_cast<std::uint16_t>(mask_ | (1U << modifier));
    }
}

std::vector<std::uint16_t> LockModifiers::combinations() const {
    std::vector<std::uint16_t> all;
    // Counts through the subsets of the mask, down to the empty one.
    for (unsigned subset = mask_;; subset = (subset - 1) & mask_) {
        all.push_back(static_cast<std::uint16_t>(subset));
        if (subset == 0) return all;
    }
}

}  // namespace parlivo::x11
