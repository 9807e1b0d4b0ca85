// SPDX-License-Identifier: MIT
#include "platform/linux/x11/KeyLabel.h"

#include "platform/linux/x11/KeyMap.h"
#include "platform/linux/x11/XcbHandles.h"
#include "platform/linux/x11/XcbXkb.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>

namespace parlivo::x11 {

namespace {

struct DeadKey {
    KeySymbol symbol;
    const char16_t* accent;
};
/// Dead keys give no character by themselves; these are the ones that layouts have left of "1" or
/// thereabouts.
constexpr std::array deadKeys{
    DeadKey{XKB_KEY_dead_grave, u"`"},      DeadKey{XKB_KEY_dead_acute, u"´"},
    DeadKey{XKB_KEY_dead_circumflex, u"^"}, DeadKey{XKB_KEY_dead_tilde, u"~"},
    DeadKey{XKB_KEY_dead_diaeresis, u"¨"},  DeadKey{XKB_KEY_dead_abovering, u"°"},
    DeadKey{XKB_KEY_dead_cedilla, u"¸"},    DeadKey{XKB_KEY_dead_caron, u"ˇ"},
    DeadKey{XKB_KEY_dead_macron, u"¯"},     DeadKey{XKB_KEY_dead_breve, u"˘"},
};

QString nameOf(KeySymbol symbol) {
    std::array<char, 64> name{};
    const int length = xkb_keysym_get_name(symbol, name.data(), name.size());
    return length > 0 ? QString::fromLatin1(name.data()) : QString();
}

}  // namespace

QString keyLabel(KeySymbol symbol) {
    if (symbol == XKB_KEY_NoSymbol) return {};
    const auto* const dead = std::ranges::find(deadKeys, symbol, &DeadKey::symbol);
    if (dead != deadKeys.end()) return QStringView(dead->accent).toString();
    const char32_t character = xkb_keysym_to_utf32(symbol);
    if (!QChar::isPrint(character) || QChar::isSpace(character)) return nameOf(symbol);
    return QString::fromUcs4(&character, 1).toUpper();
}

QString keyLabel(xcb_connection_t* connection, xcb_keycode_t key) {
    const auto asked = xcb_xkb_get_state(connection, XCB_XKB_ID_USE_CORE_KBD);
    const auto map = KeyMap::read(connection);
    const auto state = owned(xcb_xkb_get_state_reply(connection, asked, nullptr));
    if (!map || !state || !map->contains(key)) return {};
    return keyLabel(map->symbol(key, state->group, 0));
}

}  // namespace parlivo::x11
