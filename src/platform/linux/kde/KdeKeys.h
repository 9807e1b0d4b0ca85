// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <optional>

namespace parlivo::kde {

/// A hot key as KDE counts it: Qt's key code and modifiers in one number. nullopt for a key that has no such
/// code.
std::optional<int> combinationOf(KeyCode key, HotKeyModifiers modifiers);

}  // namespace parlivo::kde
