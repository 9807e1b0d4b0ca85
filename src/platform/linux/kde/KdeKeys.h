// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <optional>

namespace parlivo::kde {

/// A hot key as KDE counts it: Qt's key code and modifiers in one number. KDE knows a key by what the layout
/// prints on it: `printed` is that character, 0 if there is none. nullopt for a key that has no such code,
/// and for one that enters another character with Shift, if that is among the modifiers.
std::optional<int> combinationOf(KeyCode key, HotKeyModifiers modifiers, char32_t printed);

}  // namespace parlivo::kde
